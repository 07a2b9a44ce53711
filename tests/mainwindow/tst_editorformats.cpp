// HEIC, AVIF, WebP and a camera's DNG in the real window: each opens upright
// at its size and saves; the add button offers them after its own first
// filter; a photograph dropped on the window opens (entering the editor from
// a page), anything else dropped changes nothing.
#include "EditorSession.h"
#include "FormatSamples.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "PhotoFormats.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMimeData>
#include <QWebEngineView>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

const char* const kOriginalFilter = "Image files(*.bmp *.jpg *.tiff *.png *JEPG);";

// coffee.png (600 x 400) in the format named, stored with orientation 6 where
// the format has one: upright it is 600 x 400 again.
QString makePhoto(const QString& format)
{
    const cv::Mat photo = cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR);
    const QString dir = QDir::tempPath() + QStringLiteral("/photos/风光");
    QDir().mkpath(dir);
    const QString path = dir + QStringLiteral("/coffee.") + format;
    return writeFormatSample(path, photo, 6) ? path : QString();
}

// Drags `urls` over `target` and drops them; true when the drop was taken.
bool dropOn(QWidget* target, const QList<QUrl>& urls)
{
    QMimeData mime;
    mime.setUrls(urls);
    const QPoint at = target->rect().center();
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

} // namespace

class TestEditorFormats : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;
    EditorSession& s() { return *m_session; }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    void opensAndSaves_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("depth");
        QTest::newRow("HEIC") << "heic" << CV_8U;
        QTest::newRow("AVIF") << "avif" << CV_8U;
        QTest::newRow("WebP") << "webp" << CV_8U;
        QTest::newRow("DNG") << "dng" << CV_16U;
    }
    void opensAndSaves()
    {
        QFETCH(QString, format);
        QFETCH(int, depth);
        const QString path = makePhoto(format);
        QVERIFY(!path.isEmpty());
        QVERIFY(s().open(path));
        QCOMPARE(s().doc().m_filePath, path);
        QCOMPARE(s().doc().m_srcMat.cols, 600);
        QCOMPARE(s().doc().m_srcMat.rows, 400);
        QCOMPARE(s().doc().m_srcMat.depth(), depth);
        QCOMPARE(s().doc().m_showMat.cols, 1200);
        QCOMPARE(s().doc().m_sceneIndex, 4);  // "风光" in the path

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        setting st = interactiveSave(s().saveFolder(), "coffee", "JPG");
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(20000));
        QCOMPARE(answerer.seen().value(0).text, QStringLiteral("保存文件成功！"));
        const cv::Mat saved = cv::imread((s().saveFolder() + "/coffee.jpg").toStdString(), cv::IMREAD_UNCHANGED);
        QCOMPARE(saved.cols, 600);
        QCOMPARE(saved.rows, 400);
    }

    // The product's own filter stays first and selected, exactly; the
    // photographs and all files follow.
    void addButtonFilters()
    {
        const QString heic = makePhoto(QStringLiteral("heic"));
        ModalAnswerer answerer;
        QStringList filters;
        QString selected;
        answerer.handle([&](QWidget* widget) {
            auto* dialog = qobject_cast<QFileDialog*>(widget);
            filters = dialog->nameFilters();
            selected = dialog->selectedNameFilter();
            if (QWidget* focus = dialog->focusWidget())
                focus->clearFocus();  // else the name field keeps its text
            dialog->selectFile(heic);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        s().window().clickedAddBtn();
        QVERIFY(answerer.waitAllAnswered());
        QCOMPARE(filters, QStringList{QString::fromUtf8(kOriginalFilter)} + photoFileFilters());
        QCOMPARE(selected, QString::fromUtf8(kOriginalFilter));
        for (const char* pattern : {"*.heic", "*.HEIC", "*.avif", "*.webp", "*.jpeg", "*.tif", "*.dng", "*.NEF", "*.cr3"})
            QVERIFY2(filters.value(1).contains(QLatin1String(pattern) + QLatin1Char(' ')) ||
                     filters.value(1).contains(QLatin1String(pattern) + QLatin1Char(')')), pattern);
        QCOMPARE(filters.value(2), QStringLiteral("All files (*)"));
        QTRY_COMPARE(s().doc().m_filePath, heic);  // opened in the background
    }

    // Dropped on the home page, a photograph enters the editor and opens;
    // a text file, two photographs or a folder are refused with no trace.
    void drop()
    {
        const QString dng = makePhoto(QStringLiteral("dng"));
        const QString webp = makePhoto(QStringLiteral("webp"));
        const QString text = QDir::tempPath() + QStringLiteral("/notes.jpg");
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("just some words\n") > 0);
        file.close();

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);  // leaving the editor for the home page
        s().find<QAbstractButton>("repairBtn")->click();
        QVERIFY(answerer.waitAllAnswered());
        QWidget* homeView = nullptr;
        for (QWebEngineView* view : s().window().findChildren<QWebEngineView*>()) {
            if (view->isVisible())
                homeView = view;
        }
        QVERIFY(homeView && !s().find<QWidget>("myWidget")->isVisible());

        const QUrl dngUrl = QUrl::fromLocalFile(dng);
        for (const QList<QUrl>& refused : {QList<QUrl>{QUrl::fromLocalFile(text)}, QList<QUrl>{dngUrl, QUrl::fromLocalFile(webp)},
                                           QList<QUrl>{QUrl::fromLocalFile(QDir::tempPath())}, QList<QUrl>{QUrl("https://example.org/a.jpg")}}) {
            QVERIFY(!dropOn(homeView, refused));
            QVERIFY(!dropOn(&s().window(), refused));
        }
        QTest::qWait(50);
        QVERIFY(s().doc().m_filePath.isEmpty() && !s().find<QWidget>("myWidget")->isVisible());

        QVERIFY(dropOn(homeView, {dngUrl}));
        QTRY_COMPARE(s().doc().m_filePath, dng);
        QVERIFY(s().find<QWidget>("myWidget")->isVisible());
        QCOMPARE(s().doc().m_srcMat.cols, 600);

        QVERIFY(dropOn(s().find<QWidget>("imageView"), {QUrl::fromLocalFile(webp)}));
        QTRY_COMPARE(s().doc().m_filePath, webp);
        QCOMPARE(answerer.unexpectedCount(), 0);
    }
};

MELO_WEBENGINE_TEST_MAIN(TestEditorFormats)
#include "tst_editorformats.moc"
