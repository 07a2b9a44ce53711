// Keyboard shortcuts of the editor's buttons. A shortcut presses its button,
// so it runs the very slot the button runs, and it is live only while that
// button is usable: otherwise the key goes on to whatever has the focus (a
// text field of the web pages, for one). The button's tool tip names it.
#pragma once

#include <QKeySequence>
#include <QObject>

#include <functional>
#include <vector>

class QAbstractButton;
class QShortcut;
class QWidget;

// "tip (key)", the tip being the button's own tool tip or, without one, its
// text with any mnemonic ampersand removed.
QString shortcutToolTip(const QString& toolTip, const QString& buttonText, const QKeySequence& key);

class EditorShortcuts : public QObject
{
public:
    // The shortcuts belong to `window` and work while it is the active window.
    explicit EditorShortcuts(QWidget* window);
    ~EditorShortcuts() override;

    // `key` presses `button` whenever `usable` says so. The first key bound
    // to a button is the one its tool tip names.
    void bind(const QKeySequence& key, QAbstractButton* button, std::function<bool()> usable);

    // Enables exactly the shortcuts whose buttons are usable now. Runs
    // before every key is matched against the shortcuts.
    void refresh();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Binding {
        QShortcut* shortcut;
        QAbstractButton* button;
        std::function<bool()> usable;
    };
    QWidget* m_window;
    std::vector<Binding> m_bindings;
};
