#include "DownLoadTarget.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {
const QChar kBatchSeparator = QLatin1Char('|');
}

DownloadBatch splitDownloadBatch(const QString& urls, const QString& names)
{
    DownloadBatch batch;
    QString restUrls = urls;
    QString restNames = names;
    auto takeName = [&restNames]() {
        const int cut = restNames.indexOf(kBatchSeparator);
        if (cut < 0)
            return restNames;
        const QString name = restNames.left(cut);
        restNames = restNames.mid(cut + 1);
        return name;
    };
    int cut;
    while ((cut = restUrls.indexOf(kBatchSeparator)) >= 0) {
        batch.urls << restUrls.left(cut);
        restUrls = restUrls.mid(cut + 1);
        batch.names << takeName();
    }
    if (!restUrls.isEmpty()) {
        batch.urls << restUrls;
        batch.names << takeName();
    }
    return batch;
}

QString plainFileName(const QString& name)
{
#ifdef Q_OS_WIN
    // A drive prefix ("C:name") would leave the folder as well.
    static const QRegularExpression separators(QStringLiteral("[/\\\\:]"));
#else
    static const QRegularExpression separators(QStringLiteral("[/\\\\]"));
#endif
    const QStringList parts = name.split(separators, Qt::SkipEmptyParts);
    for (auto it = parts.crbegin(); it != parts.crend(); ++it) {
        const QString part = it->trimmed();
        if (!part.isEmpty() && part != QLatin1String(".") && part != QLatin1String(".."))
            return *it;
    }
    return QString();
}

QString downloadTargetPath(const QString& folder, const QString& name)
{
    const QString plain = plainFileName(name);
    if (plain.isEmpty())
        return QString();
    return QStringLiteral("%1//%2").arg(folder, plain);
}

QString avatarFolder()
{
    // The bytes come from an address a page chose: they belong to the user's
    // own cache, never to the shared install folder.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    QDir().mkpath(folder);
    return folder;
}
