// Records the addresses the application hands to the system browser or file
// browser: QDesktopServices::setUrlHandler(scheme, &recorder, "open").
#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};
