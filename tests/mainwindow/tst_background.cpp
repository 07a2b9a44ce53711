// Opening and saving in the background, in the real main window: a save of
// a large photograph lets the window's timers run, refuses a second save and
// a change of photograph meanwhile, and writes the same bytes as the save
// run directly; closing the window during a save finishes it. An open shows
// a quick preview (upright, colour-managed) while the document is still the
// previous one, then the same document as a direct open of the file.
#include "BusyBanner.h"
#include "DocumentTasks.h"
#include "EditorSession.h"
#include "FileBytes.h"
#include "FitRule.h"
#include "GradingTestSupport.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"

#include <QAbstractButton>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTimer>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

const char kSecondSave[] = "正在保存图片，请稍候！";
const char kChangeWhileSaving[] = "正在保存图片，保存完成后才能打开其他图片！";

// A sample photograph enlarged to `size`, as a JPEG in a folder naming the
// scene "自然景观" (0); `exif` arguments are given to exiftool afterwards.
QString bigPhotograph(const QString& name, cv::Size size, const QStringList& exif = {})
{
    const QString path = stretchedPhoto(name, QSize(size.width, size.height));
    if (!exif.isEmpty())
        QProcess::execute("exiftool", QStringList{"-q", "-overwrite_original", "-n"} + exif + QStringList{path});
    return path;
}

setting saveRecord(const QString& folder)
{
    return interactiveSave(folder, "big-graded", "JPG");
}

} // namespace

class TestBackground : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;
    EditorSession& s() { return *m_session; }

    // The photograph opened and graded with down preset 0, and the bytes the
    // save run directly on the same snapshot writes.
    QByteArray openGradedAndSaveDirectly(const QString& path)
    {
        if (!s().open(path))
            return QByteArray();
        s().find<QAbstractButton>("downPreset0")->click();
        QTemporaryDir direct;
        const RandomPick pick{0, -1, -1, 0};
        const SaveJob job = s().doc().saveJob(saveRecord(direct.path()), false, 0, pick.selection(100));
        if (runSave(job).status != SaveStatus::Written)
            return QByteArray();
        return fileBytes(direct.filePath("big-graded.jpg"));
    }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    void saveKeepsTheWindowAlive()
    {
        const QString photo = bigPhotograph("big.jpg", cv::Size(6000, 4000));
        const QByteArray expected = openGradedAndSaveDirectly(photo);
        QVERIFY(!expected.isEmpty());
        const QString other = placePhoto(QStringLiteral("chelsea.png"), QStringLiteral("人像"));

        ModalAnswerer answerer;
        for (int i = 0; i < 3; ++i)
            answerer.answer(QMessageBox::Yes);
        BrisaQT& window = s().window();
        bool refused = false;
        BusyWatch watch(s(), [&] { return window.isSaving(); }, "big-graded.jpg", [&] {
            refused = true;
            setting again = saveRecord(s().saveFolder());
            window.start_timer_event(again);
            window.openAdjustment(other);
        });
        QSignalSpy ended(&window, &BrisaQT::saveEnded);
        setting st = saveRecord(s().saveFolder());
        window.start_timer_event(st);
        QVERIFY(ended.wait(60000));
        QVERIFY(answerer.waitAllAnswered(10000));

        QVERIFY2(watch.ticks() >= 5, qPrintable(QString::number(watch.ticks())));
        QVERIFY(refused && watch.shownBusy());
        QStringList texts;
        for (const ModalAnswerer::Seen& seen : answerer.seen())
            texts << seen.text;
        QVERIFY2(texts.contains(QString::fromUtf8(kSecondSave)) && texts.contains(QString::fromUtf8(kChangeWhileSaving))
                     && texts.contains(QStringLiteral("保存文件成功！")),
                 qPrintable(texts.join(" | ")));
        QCOMPARE(s().doc().m_filePath, photo);   // the change was refused
        QVERIFY(!window.isOpening() && !s().find<BusyBanner>("busyBanner")->isVisible());
        QVERIFY(s().find<QWidget>("myWidget")->cursor().shape() != Qt::BusyCursor);
        QVERIFY(fileBytes(s().saveFolder() + "/big-graded.jpg") == expected);
        QCOMPARE(QDir(s().saveFolder()).entryList(QDir::Files), QStringList{"big-graded.jpg"});
    }

    // The window goes while the save runs: the file is finished, whole, and
    // nothing else is left in the folder.
    void closingDuringSaveFinishesIt()
    {
        const QByteArray expected = openGradedAndSaveDirectly(bigPhotograph("big.jpg", cv::Size(4000, 3000)));
        QVERIFY(!expected.isEmpty());
        QTemporaryDir keep;   // the session's folder goes with it
        setting st = saveRecord(keep.path());
        ModalAnswerer answerer;   // nothing may be asked
        QSignalSpy gone(&s().window(), &QObject::destroyed);
        QTimer closer;
        closer.setInterval(10);
        connect(&closer, &QTimer::timeout, [&] {
            if (m_session && s().window().isSaving())
                m_session.reset();
        });
        closer.start();
        s().window().start_timer_event(st);
        QVERIFY(gone.wait(10000));
        QCOMPARE(answerer.seen().size(), 0);
        QVERIFY(fileBytes(keep.filePath("big-graded.jpg")) == expected);
        QCOMPARE(QDir(keep.path()).entryList(QDir::Files), QStringList{"big-graded.jpg"});
    }

    // A portrait taken sideways (EXIF 6) with an Adobe RGB profile.
    void openShowsQuickPreviewFirst()
    {
        const QString first = placePhoto(QStringLiteral("chelsea.png"), QStringLiteral("人像"));
        QVERIFY(s().open(first));
        const QString path = bigPhotograph(
            "turned.jpg", cv::Size(6000, 4000),
            {"-Orientation=6", "-icc_profile<=/usr/share/color/icc/compatibleWithAdobeRGB1998.icc"});
        BrisaQT& window = s().window();
        auto* view = s().find<MyDrawLabel>("imageView");

        QString documentAtPreview;
        bool openingAtPreview = false;
        bool saveOffAtPreview = false;
        QImage shownAtPreview;
        connect(&window, &BrisaQT::photographPreviewShown, this, [&] {
            documentAtPreview = s().doc().m_filePath;
            openingAtPreview = window.isOpening();
            saveOffAtPreview = !s().find<QWidget>("m_right_down_saveBtn")->isEnabled();
            shownAtPreview = view->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_RGB888);
        });
        QSignalSpy ended(&window, &BrisaQT::photographOpenEnded);
        window.openAdjustment(path);
        QVERIFY(ended.wait(30000));
        QCOMPARE(ended.constLast().at(1).toBool(), true);

        // The preview showed while the previous photograph was the document.
        QCOMPARE(documentAtPreview, first);
        QVERIFY(openingAtPreview && saveOffAtPreview);
        QVERIFY(s().find<QWidget>("m_right_down_saveBtn")->isEnabled());

        // The document is the one a direct open gives.
        ImageDocument direct;
        QVERIFY(direct.openAdjustment(path));
        const ImageDocument& doc = s().doc();
        QVERIFY(sameImage(doc.m_srcMat, direct.m_srcMat) && sameImage(doc.m_orgMat, direct.m_srcMat));
        QVERIFY(sameImage(doc.m_showMat, direct.m_showMat) && sameImage(doc.m_dstMat, direct.m_showMat));
        QVERIFY(sameImage(doc.m_thumbMat, direct.m_thumbMat));
        QVERIFY(doc.m_iccProfile == direct.m_iccProfile && doc.m_exifSegment == direct.m_exifSegment);
        QCOMPARE(doc.m_sceneIndex, 0);

        // The quick preview was upright and converted like the full one:
        // within a level or two of what the view shows now.
        QCOMPARE(doc.m_showMat.cols, 660);
        const QImage now = view->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_RGB888);
        QCOMPARE(shownAtPreview.size(), now.size());
        const cv::Mat a(now.height(), now.width(), CV_8UC3, const_cast<uchar*>(now.constBits()), now.bytesPerLine());
        const cv::Mat b(shownAtPreview.height(), shownAtPreview.width(), CV_8UC3,
                        const_cast<uchar*>(shownAtPreview.constBits()), shownAtPreview.bytesPerLine());
        const double mean = cv::norm(a, b, cv::NORM_L1) / double(a.total() * 3);
        QVERIFY2(mean < 2.0, qPrintable(QString::number(mean)));
    }

    // A second open replaces one whose quick preview shows, and fails: the
    // first one's results are dropped, and the previous photograph is the
    // document and the picture again, ready for work.
    void replacedOpenThenFailureKeepsThePhotograph()
    {
        const QString first = placePhoto(QStringLiteral("chelsea.png"), QStringLiteral("人像"));
        QVERIFY(s().open(first));
        const QString big = bigPhotograph("big.jpg", cv::Size(6000, 4000));
        BrisaQT& window = s().window();
        QSignalSpy preview(&window, &BrisaQT::photographPreviewShown);
        QSignalSpy ended(&window, &BrisaQT::photographOpenEnded);
        window.openAdjustment(big);
        QVERIFY(preview.wait(30000));
        QVERIFY(ended.isEmpty());
        window.openAdjustment(placePhoto(QStringLiteral("truncated.jpg"), QStringLiteral("风光")));
        QVERIFY(ended.wait(30000));
        QCOMPARE(ended.constLast().at(1).toBool(), false);

        QCOMPARE(s().doc().m_filePath, first);
        const QImage shown = s().find<MyDrawLabel>("imageView")->pixmap(Qt::ReturnByValue).toImage();
        QVERIFY(shown.convertToFormat(QImage::Format_RGB888)
                == matToQImage(s().doc().forDisplay(s().doc().m_showMat)).convertToFormat(QImage::Format_RGB888));
        QVERIFY(s().find<QWidget>("m_right_down_saveBtn")->isEnabled() && !window.isOpening());
        // The replaced open ends unheard.
        auto* tasks = window.findChild<DocumentTasks*>();
        QVERIFY(tasks);
        tasks->waitForDone();
        QCoreApplication::sendPostedEvents(tasks);
        QCOMPARE(ended.size(), 1);
        QCOMPARE(preview.size(), 1);
        QCOMPARE(s().doc().m_filePath, first);
        QVERIFY(s().find<QWidget>("editorToolStrip")->isVisible());
        QCOMPARE(s().misplacedStrips(), QStringList());
    }

    // The tool strip, placed for a wide photograph, does not lie over the
    // quick preview of a 4:3 one that needs it elsewhere; it is back, in its
    // new place, once the open has ended.
    void quickPreviewLeavesTheStripOff()
    {
        QVERIFY(s().open(stretchedPhoto("wide.png", QSize(1600, 900))));
        QVERIFY(s().find<QWidget>("editorToolStrip")->isVisible());
        QStringList misplacedAtPreview{QStringLiteral("no quick preview")};
        connect(&s().window(), &BrisaQT::photographPreviewShown, this,
                [&] { misplacedAtPreview = s().misplacedStrips(); });
        QVERIFY(s().open(bigPhotograph("big.jpg", cv::Size(4000, 3000))));
        QCOMPARE(misplacedAtPreview, QStringList());
        QVERIFY(s().find<QWidget>("editorToolStrip")->isVisible());
        QCOMPARE(s().misplacedStrips(), QStringList());
    }
};

MELO_WEBENGINE_TEST_MAIN(TestBackground)
#include "tst_background.moc"
