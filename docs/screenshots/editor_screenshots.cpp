// Takes the editor's screenshots for the documentation: a graded photograph
// with its preset thumbnails (editor.png) and the crop tool at 1 : 1
// (editor-crop.png). Usage: editor_screenshots <output folder>
#include "EditorSession.h"
#include "GlobalConstants.h"
#include "MyButtonGroup.h"
#include "MySlider.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QTest>

#include <opencv2/core.hpp>

#include <cstdio>

static void settle()
{
    QTest::qWait(300);
}

int main(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    qRegisterMetaType<cv::Mat>(kMatMetaTypeName);
    if (argc < 2 || !installPresets()) {
        fprintf(stderr, "usage: editor_screenshots <output folder> (needs the preset library)\n");
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    EditorSession session;
    session.open(placePhoto(QStringLiteral("chelsea.png"), QStringLiteral("动物鸟类")));
    session.find<QAbstractButton>("topPreset1")->click();
    session.find<QAbstractButton>("downPreset2")->click();
    session.find<MySlider>("downSlider")->setValue(80);
    settle();
    bool ok = session.window().grab().save(out + QStringLiteral("/editor.png"));

    session.find<QAbstractButton>("cropBtn")->click();
    session.find<QComboBox>("cropComboBox")->setCurrentIndex(1);
    settle();
    ok = session.window().grab().save(out + QStringLiteral("/editor-crop.png")) && ok;
    return ok ? 0 : 1;
}
