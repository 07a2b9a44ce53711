// Records the addresses the application hands to the system browser instead
// of opening them: install with QDesktopServices::setUrlHandler for a scheme.
#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    explicit UrlRecorder(const QStringList& schemes = {QStringLiteral("http"), QStringLiteral("https")})
        : m_schemes(schemes)
    {
        for (const QString& scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~UrlRecorder() override
    {
        for (const QString& scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls.append(url); }

private:
    QStringList m_schemes;
};
