#include "QtTranslation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

bool installQtTranslation(QCoreApplication* app)
{
    const QString name = QString::fromLatin1(kQtTranslationName);
    // The translator lives as long as the application, which owns it.
    auto* translator = new QTranslator(app);
    // Qt's own folder first (Debian's qttranslations5-l10n); a copy shipped
    // beside the program serves where Qt's translations are not installed.
    const QStringList folders{QLibraryInfo::location(QLibraryInfo::TranslationsPath),
                              QCoreApplication::applicationDirPath() + QStringLiteral("/translations")};
    for (const QString& folder : folders) {
        if (translator->load(name, folder) && QCoreApplication::installTranslator(translator))
            return true;
    }
    delete translator;
    return false;
}
