#include "WebChannelScript.h"

#include <QFile>
#include <QWebChannel>

std::string webChannelScript()
{
    // Using a symbol of the module keeps the library linked; its resources
    // are registered when it is loaded.
    const QMetaObject* volatile module = &QWebChannel::staticMetaObject;
    (void)module;
    QFile file(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
    if (!file.open(QIODevice::ReadOnly))
        return std::string();
    const QByteArray script = file.readAll();
    return std::string(script.constData(), static_cast<size_t>(script.size()));
}
