// Runs a script in a web page and waits for its result (an invalid QVariant
// after the timeout). Scripts run in a page in the order they were issued, so
// a result also means every script issued before it has run.
#pragma once

#include <QEventLoop>
#include <QTimer>
#include <QVariant>
#include <QWebEnginePage>

#include <memory>

inline QVariant runPageScript(QWebEnginePage* page, const QString& script, int timeoutMs = 10000)
{
    struct State {
        QVariant result;
        bool done = false;
        QEventLoop loop;
    };
    // Shared with the callback, which may come after a timeout.
    auto state = std::make_shared<State>();
    page->runJavaScript(script, [state](const QVariant& result) {
        state->result = result;
        state->done = true;
        state->loop.quit();
    });
    if (!state->done) {
        QTimer::singleShot(timeoutMs, &state->loop, &QEventLoop::quit);
        state->loop.exec();
    }
    return state->result;
}
