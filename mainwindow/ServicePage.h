// The page of a web view that shows only the service's own pages. Any other
// address the page navigates to is handed to the system browser (http and
// https) or refused, and the bridge channel is attached only while the page
// shows a service address, so a page of another origin can never reach
// "qtui". New windows and pop-ups stay refused (no window is ever created).
#pragma once

#include <QStringList>
#include <QWebEnginePage>

class QWebChannel;

class ServicePage : public QWebEnginePage
{
    Q_OBJECT
public:
    ServicePage(QWebEngineProfile* profile, const QStringList& serviceBases, QObject* parent);

    // The channel the page gets while it shows one of the service's pages.
    void setServiceChannel(QWebChannel* channel);

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;

private:
    void attachChannelFor(const QUrl& url);

    QStringList m_serviceBases;
    QWebChannel* m_channel = nullptr;
};
