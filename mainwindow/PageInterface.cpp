#include "PageInterface.h"

#include <QStringList>
#include <QUrl>

namespace PageInterface {

namespace {

int g_currentUserId = 0;

const QChar kListSeparator = QLatin1Char('|');

bool isPlainFileName(const QString& name)
{
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    for (const QChar c : name) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c == QLatin1Char(':') || c.unicode() < 0x20)
            return false;
    }
    return true;
}

} // namespace

QString pageAddress(const QString& serviceBase, const char* pagePath, const QString& channel)
{
    return QStringLiteral("%1%2").arg(serviceBase + QString::fromUtf8(pagePath), channel);
}

int userIdFromPage(const QString& text)
{
    bool ok = false;
    const int id = text.toInt(&ok, 10);
    return ok ? id : 0;
}

bool isWebAddress(const QString& text)
{
    const QUrl url(text, QUrl::StrictMode);
    const QString scheme = url.scheme();
    return url.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        && !url.host().isEmpty();
}

QString lengthRefusal(std::initializer_list<QString> arguments)
{
    for (const QString& argument : arguments) {
        if (argument.size() > kMaxArgumentLength)
            return QStringLiteral("an argument of %1 characters is longer than %2").arg(argument.size()).arg(kMaxArgumentLength);
    }
    return QString();
}

QString downloadRefusal(const QString& urls, const QString& names)
{
    const QString tooLong = lengthRefusal({urls, names});
    if (!tooLong.isEmpty())
        return tooLong;
    for (const QString& url : urls.split(kListSeparator)) {
        if (!url.isEmpty() && !isWebAddress(url))
            return QStringLiteral("\"%1\" is not a web address").arg(url.left(200));
    }
    for (const QString& name : names.split(kListSeparator)) {
        if (!isPlainFileName(name))
            return QStringLiteral("\"%1\" is not a plain file name").arg(name.left(200));
    }
    return QString();
}

QString updateNoteScript(const QString& displayVersion, const QString& lastVersion)
{
    return QStringLiteral("updateNote('%1','%2')").arg(displayVersion, lastVersion);
}

int currentUserId()
{
    return g_currentUserId;
}

void setCurrentUserId(int id)
{
    g_currentUserId = id;
}

} // namespace PageInterface
