#include "EditorSession.h"

#include "BusyBanner.h"
#include "GlobalConstants.h"
#include "PresetFolder.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProcess>
#include <QSignalSpy>
#include <QStyle>
#include <QTest>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdlib>

bool installPresets()
{
    const QString target = presetLibraryFolder();
    if (!QFileInfo::exists(target + QStringLiteral("/5/19.CUBE")))
        QProcess::execute(QStringLiteral("cp"), {"-r", QStringLiteral(MELO_PRESET_DIR "/MELO"), presetUnpackParent()});
    return QFileInfo::exists(target + QStringLiteral("/5/19.CUBE"));
}

QString placePhoto(const QString& sample, const QString& folder, const QString& name)
{
    const QString dir = QDir::tempPath() + QStringLiteral("/photos/") + folder;
    const QString path = dir + QLatin1Char('/') + (name.isEmpty() ? sample : name);
    QDir().mkpath(dir);
    QFile::remove(path);
    QFile::copy(QStringLiteral(MELO_SAMPLES_DIR "/") + sample, path);
    return path;
}

QString stretchedPhoto(const QString& name, const QSize& size)
{
    const QString path = placePhoto(QStringLiteral("coffee.png"), QStringLiteral("自然景观"), name);
    cv::Mat stretched;
    cv::resize(cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR), stretched,
               cv::Size(size.width(), size.height()), 0, 0, cv::INTER_CUBIC);
    cv::imwrite(path.toStdString(), stretched, {cv::IMWRITE_JPEG_QUALITY, 95});
    return path;
}

unsigned seedForDraws(RandomPick* picks, int count)
{
    for (unsigned seed = 1;; ++seed) {
        std::srand(seed);
        SmartDraw draw;
        bool usable = true;
        for (int i = 0; i < count; ++i) {
            picks[i] = draw.draw();
            usable = usable && picks[i].scene >= 0 && picks[i].hasLayers() && (i == 0 || picks[i] != picks[i - 1]);
        }
        if (usable)
            return seed;
    }
}

EditorSession::EditorSession()
{
    m_saveFolderPath = m_saveFolder.path();
    writeSettingValue(kProductKey, kDownLoadPath, m_saveFolderPath);
    m_window = std::make_unique<BrisaQT>();
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window.get()))
        qWarning("editor session: the window was not exposed");
    m_window->clickedRefreshBtn();
}

EditorSession::~EditorSession() = default;

QRect EditorSession::shownPicture() const
{
    const auto* view = find<QLabel>("imageView");
    const QSize picture = view->pixmap(Qt::ReturnByValue).size();
    if (picture.isEmpty())
        return QRect();
    return QStyle::alignedRect(view->layoutDirection(), view->alignment(), picture, view->contentsRect())
        .translated(view->pos());
}

QStringList EditorSession::misplacedStrips() const
{
    const QRect picture = shownPicture();
    QStringList misplaced;
    for (const char* name : {"editorToolStrip", "cropToolStrip"}) {
        const auto* strip = find<QWidget>(name);
        if (strip->isVisible()
            && (strip->geometry().intersects(picture) || !strip->parentWidget()->rect().contains(strip->geometry())))
            misplaced << QLatin1String(name);
    }
    return misplaced;
}

bool EditorSession::open(const QString& path)
{
    QSignalSpy ended(m_window.get(), &BrisaQT::photographOpenEnded);
    m_window->openAdjustment(path);
    return ended.wait(30000) && ended.constLast().at(1).toBool();
}

BusyWatch::BusyWatch(EditorSession& session, std::function<bool()> busy, const QString& name,
                     std::function<void()> atFirstTick)
{
    m_timer.setInterval(10);
    QObject::connect(&m_timer, &QTimer::timeout, [this, &session, busy, name, atFirstTick] {
        if (!busy())
            return;
        if (m_ticks++ == 0 && atFirstTick)
            atFirstTick();
        auto* banner = session.find<BusyBanner>("busyBanner");
        m_shownBusy = m_shownBusy && banner && banner->isVisible() && banner->text().contains(name)
                      && session.find<QWidget>("myWidget")->cursor().shape() == Qt::BusyCursor;
    });
    m_timer.start();
}
