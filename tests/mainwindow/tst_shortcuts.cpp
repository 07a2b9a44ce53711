// The editor's keyboard shortcuts in the real window: each presses its
// button where that button can be used and does nothing elsewhere.
#include "EditorSession.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"

#include <QAbstractButton>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

namespace {

enum class Where { Home, EditorEmpty, Photo, Cropping };

} // namespace
Q_DECLARE_METATYPE(Where)

class TestShortcuts : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;

    EditorSession& s() { return *m_session; }
    QAbstractButton* button(const char* name) { return s().find<QAbstractButton>(name); }

    // Brings the window into the state; answers the dialogs that takes.
    void goTo(Where where)
    {
        ModalAnswerer answerer;
        if (where == Where::Home) {
            answerer.answer(QMessageBox::Yes);   // leaving the editor
            s().window().clickedRepairBtn();
            QVERIFY(answerer.waitAllAnswered());
        }
        if (where == Where::Photo || where == Where::Cropping) {
            QVERIFY(s().open(placePhoto(QStringLiteral("coffee.png"), QStringLiteral("自然景观"))));
            QVERIFY(s().doc().hasImage());
        }
        if (where == Where::Cropping)
            button("cropBtn")->click();
    }

private slots:
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    // What a key did: the dialog it opened, or the change it made to the
    // crop or the compare; empty when it did nothing.
    void keys_data()
    {
        QTest::addColumn<Where>("where");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<QString>("effect");
        const int ctrl = Qt::ControlModifier;
        QTest::newRow("Ctrl+O in the editor") << Where::EditorEmpty << int(Qt::Key_O) << ctrl << "打开文件";
        QTest::newRow("Ctrl+O on the home page") << Where::Home << int(Qt::Key_O) << ctrl << "";
        QTest::newRow("Ctrl+S with a photograph") << Where::Photo << int(Qt::Key_S) << ctrl << "SaveDialog";
        QTest::newRow("Ctrl+S, no photograph") << Where::EditorEmpty << int(Qt::Key_S) << ctrl << "";
        QTest::newRow("Return while cropping") << Where::Cropping << int(Qt::Key_Return) << 0 << "crop accepted";
        QTest::newRow("Enter while cropping") << Where::Cropping << int(Qt::Key_Enter) << 0 << "crop accepted";
        QTest::newRow("keypad Enter while cropping")
            << Where::Cropping << int(Qt::Key_Enter) << int(Qt::KeypadModifier) << "crop accepted";
        QTest::newRow("Esc while cropping") << Where::Cropping << int(Qt::Key_Escape) << 0 << "crop left";
        QTest::newRow("Return, not cropping") << Where::Photo << int(Qt::Key_Return) << 0 << "";
        QTest::newRow("Esc, not cropping") << Where::Photo << int(Qt::Key_Escape) << 0 << "";
        QTest::newRow("backslash with a photograph") << Where::Photo << int(Qt::Key_Backslash) << 0 << "compare";
        QTest::newRow("backslash, no photograph") << Where::EditorEmpty << int(Qt::Key_Backslash) << 0 << "";
    }
    void keys()
    {
        QFETCH(Where, where);
        QFETCH(int, key);
        QFETCH(int, modifiers);
        goTo(where);
        const bool cropping = s().find<QWidget>("cropToolStrip")->isVisible();
        const int crops = s().doc().m_cropRects.size();
        const bool original = s().find<MyDrawLabel>("imageView")->isOriginalShown();

        ModalAnswerer answerer;   // any dialog is dismissed and recorded
        // Shortcuts work in the active window. Other tests' windows share the
        // display and may take the focus at any time, so the window is made
        // the active one right before the key, with no event in between.
        QApplication::setActiveWindow(&s().window());
        QTest::keyClick(&s().window(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QTest::qWait(200);        // a dialog that should not come has had its time
        QString effect;
        if (!answerer.seen().isEmpty()) {
            const ModalAnswerer::Seen& dialog = answerer.seen().first();
            effect = dialog.className == QLatin1String("QFileDialog") ? dialog.title : dialog.className;
        } else if (s().doc().m_cropRects.size() > crops) {
            effect = QStringLiteral("crop accepted");
        } else if (cropping && !s().find<QWidget>("cropToolStrip")->isVisible()) {
            effect = QStringLiteral("crop left");
        } else if (s().find<MyDrawLabel>("imageView")->isOriginalShown() != original) {
            effect = QStringLiteral("compare");
        }
        QTEST(effect, "effect");
    }

    // The tool tip a button shows names its key, added to the button's own
    // tip (the eye) or to its caption.
    void toolTipsNameTheKeys_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("tip");
        QTest::newRow("add image") << "addImageBtn" << "添加图片 (Ctrl+O)";
        QTest::newRow("save") << "m_right_down_saveBtn" << "保存 (Ctrl+S)";
        QTest::newRow("accept crop") << "yesShapeBtn" << "确定 (Enter)";
        QTest::newRow("leave crop") << "noShapeBtn" << "取消 (Esc)";
        QTest::newRow("eye") << "contrastBtn" << "查看原图 (\\)";
    }
    void toolTipsNameTheKeys()
    {
        QFETCH(QString, button);
        QAbstractButton* b = s().find<QAbstractButton>(button.toLatin1().constData());
        QVERIFY(b);
        const QPoint inside = b->rect().center();
        QHelpEvent ask(QEvent::ToolTip, inside, b->mapToGlobal(inside));
        QApplication::sendEvent(b, &ask);
        QTEST(QToolTip::text(), "tip");
        QToolTip::hideText();
    }
};

MELO_WEBENGINE_TEST_MAIN(TestShortcuts)
#include "tst_shortcuts.moc"
