#include "ServicePage.h"

#include "PageInterface.h"

#include <QDesktopServices>
#include <QWebChannel>

ServicePage::ServicePage(QWebEngineProfile* profile, const QStringList& serviceBases, QObject* parent)
    : QWebEnginePage(profile, parent), m_serviceBases(serviceBases)
{
    // Navigations are vetted before they start; this covers whatever ends up
    // shown all the same (a redirect, a history entry).
    connect(this, &QWebEnginePage::urlChanged, this, &ServicePage::attachChannelFor);
}

void ServicePage::setServiceChannel(QWebChannel* channel)
{
    m_channel = channel;
    attachChannelFor(url());
}

void ServicePage::attachChannelFor(const QUrl& url)
{
    // A page not loaded yet has an empty address: the channel waits for the
    // first service page.
    const bool service = url.isEmpty()
        || PageInterface::navigationFor(url, true, m_serviceBases) == PageInterface::Navigation::Load;
    setWebChannel(service ? m_channel : nullptr);
}

bool ServicePage::acceptNavigationRequest(const QUrl& url, NavigationType, bool isMainFrame)
{
    switch (PageInterface::navigationFor(url, isMainFrame, m_serviceBases)) {
    case PageInterface::Navigation::Load:
        return true;
    case PageInterface::Navigation::OpenInBrowser:
        QDesktopServices::openUrl(url);
        return false;
    case PageInterface::Navigation::Refuse:
        break;
    }
    qWarning("page %s: navigation to \"%s\" refused", qUtf8Printable(objectName()),
             qUtf8Printable(url.toString().left(200)));
    return false;
}
