#include "PageInterface.h"

#include <QStringList>
#include <QUrl>

namespace PageInterface {

namespace {

int g_currentUserId = 0;

const QChar kListSeparator = QLatin1Char('|');
// Quoted addresses and names are cut to this many characters.
constexpr int kQuotedLength = 200;

// Scheme, host and port alike (an omitted port is the scheme's own).
bool sameOrigin(const QUrl& a, const QUrl& b)
{
    const int defaultPort = a.scheme() == QLatin1String("https") ? 443 : 80;
    return a.scheme() == b.scheme() && a.host().compare(b.host(), Qt::CaseInsensitive) == 0
        && a.port(defaultPort) == b.port(defaultPort);
}

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

Navigation navigationFor(const QUrl& url, bool isMainFrame, const QStringList& serviceBases)
{
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        for (const QString& base : serviceBases) {
            if (sameOrigin(url, QUrl(base)))
                return Navigation::Load;
        }
        return isMainFrame && isWebAddress(url.toString()) ? Navigation::OpenInBrowser : Navigation::Refuse;
    }
    return !isMainFrame && scheme == QLatin1String("about") ? Navigation::Load : Navigation::Refuse;
}

QString lengthRefusal(std::initializer_list<QString> arguments)
{
    for (const QString& argument : arguments) {
        if (argument.size() > kMaxArgumentLength)
            return QStringLiteral("an argument of %1 characters is longer than %2").arg(argument.size()).arg(kMaxArgumentLength);
    }
    return QString();
}

Refusal downloadRefusal(const QString& urls, const QString& names)
{
    const QString tooLong = lengthRefusal({urls, names});
    if (!tooLong.isEmpty())
        return {tooLong, QStringLiteral("下载请求过长，已取消下载！")};
    for (const QString& url : urls.split(kListSeparator)) {
        if (!url.isEmpty() && !isWebAddress(url)) {
            const QString quoted = url.left(kQuotedLength);
            return {QStringLiteral("\"%1\" is not a web address").arg(quoted),
                    QStringLiteral("下载地址“%1”不是网址，已取消下载！").arg(quoted)};
        }
    }
    for (const QString& name : names.split(kListSeparator)) {
        if (!isPlainFileName(name)) {
            const QString quoted = name.left(kQuotedLength);
            return {QStringLiteral("\"%1\" is not a plain file name").arg(quoted),
                    QStringLiteral("文件名“%1”不是单纯的文件名（不能含有路径），已取消下载！").arg(quoted)};
        }
    }
    return {};
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
