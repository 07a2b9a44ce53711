// A real main window in its editor view, for the editor's tests and the
// screenshot program: the preset library copied into the temporary folder
// the program reads it from, a download folder stored, photographs placed
// under folder names that carry a scene word.
#pragma once

#include "BrisaQT.h"
#include "SmartDraw.h"

#include <QRect>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>

class QWidget;

// Copies the generated library into the preset folder (presetLibraryFolder()) once; false
// when it could not.
bool installPresets();

// A copy of the sample photograph `sample` at <temp>/photos/<folder>/<name>
// (`name` defaults to the sample's file name); the folder names the scene.
QString placePhoto(const QString& sample, const QString& folder, const QString& name = QString());

// The sample photograph coffee.png stretched to `size`, written as `name`
// (its extension picks the format) in a folder naming the scene "自然景观".
QString stretchedPhoto(const QString& name, const QSize& size);

// A seed for std::srand after which the next smart draws each pick a scene
// and a layer, all different: picks[] receives them.
unsigned seedForDraws(RandomPick* picks, int count);

// The record the save dialog hands over when the user saves `name` into
// `folder` in `format` ("JPG", "PNG", "TIFF").
inline setting interactiveSave(const QString& folder, const char* name, const QString& format)
{
    setting st;
    st.savePath = folder.toLocal8Bit().toStdString();
    st.saveName = name;
    st.saveFormat = format.toStdString();
    st.interactive = 1;
    return st;
}

class EditorSession
{
public:
    EditorSession();
    ~EditorSession();

    BrisaQT& window() { return *m_window; }
    const ImageDocument& doc() const { return m_window->document(); }
    const QString& saveFolder() const { return m_saveFolderPath; }
    // Opens a photograph as the gallery hands it over and waits until the
    // background open has ended; true when it was opened.
    bool open(const QString& path);

    // Where the image view shows its picture, in the coordinates of the
    // image area that holds the view and the tool strips.
    QRect shownPicture() const;
    // The names of the visible tool strips that lie over the shown picture
    // or reach out of the image area.
    QStringList misplacedStrips() const;

    template <typename T>
    T* find(const char* name) const
    {
        return m_window->findChild<T*>(QLatin1String(name));
    }

private:
    QTemporaryDir m_saveFolder;
    QString m_saveFolderPath;
    std::unique_ptr<BrisaQT> m_window;
};

// A 10 ms timer that counts its ticks while `busy` holds (the window runs
// its timers while it works) and notes whether every one of them found the
// editor saying so: the busy banner naming `name`, the busy cursor. Runs
// from construction; `atFirstTick` runs once, on the first busy tick.
class BusyWatch
{
public:
    BusyWatch(EditorSession& session, std::function<bool()> busy, const QString& name,
              std::function<void()> atFirstTick = {});

    int ticks() const { return m_ticks; }
    bool shownBusy() const { return m_shownBusy; }

private:
    QTimer m_timer;
    int m_ticks = 0;
    bool m_shownBusy = true;
};
