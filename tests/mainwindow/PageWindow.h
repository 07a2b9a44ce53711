// The real main window with the stand-in service's pages, for the window
// tests: widgets by object name, the two web views, scripts run in them.
#pragma once

#include "BrisaQT.h"
#include "PageScript.h"

#include <QSignalSpy>
#include <QTest>
#include <QWebEngineView>

#include <memory>

const int kPageTimeoutMs = 20000;

class PageWindow
{
public:
    BrisaQT& window() const { return *m_window; }
    explicit operator bool() const { return bool(m_window); }
    template <typename T = QWidget>
    T* widget(const char* name) const
    {
        return m_window->findChild<T*>(QLatin1String(name));
    }
    QWebEngineView* gallery() const { return widget<QWebEngineView>("webEngineView"); }
    QWebEngineView* home() const { return widget<QWebEngineView>("webEngineView2"); }

    static QVariant js(QWebEngineView* view, const QString& script) { return runPageScript(view->page(), script); }
    static bool connected(QWebEngineView* view)
    {
        return js(view, QStringLiteral("!!(window.Melo && Melo.inClient())")).toBool();
    }
    // The script that clicks the button `op` ("retouch", "keep") of a gallery card.
    static QString clickOnCard(const QString& picture, const char* op)
    {
        return QStringLiteral("document.querySelector('.card[data-name=\"%1\"] [data-op=%2]').click()")
            .arg(picture, QLatin1String(op));
    }

    // A new window, shown; true once the home page has loaded, both pages are
    // connected, the gallery lists its cards and the title bar offers the
    // login (nobody logged in).
    bool open()
    {
        m_window = std::make_unique<BrisaQT>();
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        m_window->show();
        return QTest::qWaitForWindowExposed(m_window.get()) && QTest::qWaitFor([&] {
                   return !homeLoads.isEmpty() && widget("loginBtn")->isVisible() && connected(home())
                          && connected(gallery()) && js(gallery(), QStringLiteral("document.querySelectorAll('.card').length")).toInt() > 0;
               }, kPageTimeoutMs);
    }
    void close() { m_window.reset(); }

private:
    std::unique_ptr<BrisaQT> m_window;
};
