#include "EditorSession.h"

#include "GlobalConstants.h"
#include "PresetFolder.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

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

bool EditorSession::open(const QString& path)
{
    QSignalSpy ended(m_window.get(), &BrisaQT::photographOpenEnded);
    m_window->openAdjustment(path);
    return ended.wait(30000) && ended.constLast().at(1).toBool();
}
