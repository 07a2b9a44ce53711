#include "EditorShortcuts.h"

#include <QAbstractButton>
#include <QApplication>

#include <algorithm>
#include <QHelpEvent>
#include <QShortcut>
#include <QToolTip>

QString shortcutToolTip(const QString& toolTip, const QString& buttonText, const QKeySequence& key)
{
    QString tip = toolTip;
    if (tip.isEmpty()) {
        tip = buttonText;
        tip.remove(QRegExp(QStringLiteral("&(?!&)")));
    }
    return QStringLiteral("%1 (%2)").arg(tip, key.toString(QKeySequence::NativeText));
}

EditorShortcuts::EditorShortcuts(QWidget* window) : QObject(window), m_window(window)
{
    // Qt asks the focus widget whether it takes a key before it matches the
    // key against the shortcuts: the moment to bring them up to date.
    qApp->installEventFilter(this);
}

EditorShortcuts::~EditorShortcuts()
{
    qApp->removeEventFilter(this);
}

void EditorShortcuts::bind(const QKeySequence& key, QAbstractButton* button, std::function<bool()> usable)
{
    auto* shortcut = new QShortcut(key, m_window);
    shortcut->setContext(Qt::WindowShortcut);
    shortcut->setAutoRepeat(false);
    connect(shortcut, &QShortcut::activated, button, [button, usable] {
        if (usable())
            button->click();
    });
    const bool named = std::any_of(m_bindings.begin(), m_bindings.end(),
                                   [button](const Binding& b) { return b.button == button; });
    if (!named)
        button->installEventFilter(this);
    m_bindings.push_back({shortcut, button, std::move(usable)});
    shortcut->setEnabled(m_bindings.back().usable());
}

void EditorShortcuts::refresh()
{
    for (const Binding& binding : m_bindings)
        binding.shortcut->setEnabled(binding.usable());
}

bool EditorShortcuts::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        refresh();
        return false;
    }
    if (event->type() != QEvent::ToolTip)
        return false;
    // The tool tip is shown with the key added; the button's own tool tip
    // stays as it is, since its look changes it.
    for (const Binding& binding : m_bindings) {
        if (binding.button == watched) {
            const auto* help = static_cast<QHelpEvent*>(event);
            QToolTip::showText(help->globalPos(),
                               shortcutToolTip(binding.button->toolTip(), binding.button->text(),
                                               binding.shortcut->key()),
                               binding.button);
            return true;
        }
    }
    return false;
}
