#include "CompareLook.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MyDrawLutButton.h"
#include "MyDrawLutLabel.h"
#include "MySlider.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

static void dragTo(QWidget* w, QPoint p)
{
    QMouseEvent move(QEvent::MouseMove, p, w->mapToGlobal(p), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(w, &move);
}

static void showSlider(MySlider& slider, int value)
{
    slider.setRange(0, 100);
    slider.setValue(value);
    slider.setGeometry(0, 0, 200, 20);
    slider.show();
}

class TestControls : public QObject
{
    Q_OBJECT
private slots:
    void sliderJumpsToPointer_data()
    {
        QTest::addColumn<int>("pressX");
        QTest::addColumn<int>("dragX");   // -1: no drag
        QTest::addColumn<int>("jump");    // the first value the press asks for
        QTest::newRow("x 0") << 0 << -1 << 0;
        QTest::newRow("x 99 truncates 49.5") << 99 << -1 << 49;
        QTest::newRow("x 199") << 199 << -1 << 99;
        QTest::newRow("drag to 250 clamps") << 20 << 250 << 10;
    }
    void sliderJumpsToPointer()
    {
        QFETCH(int, pressX);
        QFETCH(int, dragX);
        MySlider slider;
        showSlider(slider, 50);
        QSignalSpy values(&slider, &QSlider::valueChanged);
        QSignalSpy reports(&slider, &MySlider::sliderValueChanged);
        QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(pressX, 10));
        QVERIFY(!values.isEmpty());
        QTEST(values.first().at(0).toInt(), "jump");
        QVERIFY(reports.count() == values.count() && reports.first().at(0).value<QSlider*>() == &slider);
        if (dragX >= 0) {
            dragTo(&slider, QPoint(dragX, 10));   // asks for 125
            QCOMPARE(slider.value(), 100);
        }
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(pressX, 10));
    }

    void disabledSliderRefusesOncePerPress()
    {
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        answerer.answer(QMessageBox::Yes);
        MySlider slider;
        slider.setEnabled(false);
        showSlider(slider, 100);
        QSignalSpy values(&slider, &QSlider::valueChanged);
        for (int press = 1; press <= 2; ++press) {
            QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(10, 10));
            dragTo(&slider, QPoint(30, 10));
            QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(30, 10));
            QCOMPARE(answerer.seen().size(), press);
        }
        QCOMPARE(answerer.seen().at(0).text, QString::fromUtf8("要先选择上部效果，才能滑动！"));
        QCOMPARE(slider.value(), 100);
        QVERIFY(values.isEmpty());
    }

    void labelReportsOnlyLeftPress()
    {
        MyDrawLutLabel label;   // a MyMousePressLabel
        QSignalSpy spy(&label, &MyDrawLutLabel::mouseButtonLeftPress);
        QTest::mouseClick(&label, Qt::RightButton);
        QCOMPARE(spy.count(), 0);
        QTest::mouseClick(&label, Qt::LeftButton);
        QCOMPARE(spy.count(), 1);
    }

    // The check mark follows the checked state at the next repaint; the
    // thumbnail sits at its own size in the top-left corner.
    void lutButtonCheckMarkFollowsRepaint()
    {
        MyDrawLutButton button;
        button.setCheckable(true);
        QPixmap thumb(40, 30);
        thumb.fill(Qt::red);
        button.setThumbnail(thumb);
        button.resize(82, 82);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QTest::mouseClick(&button, Qt::LeftButton);
        button.repaint();
        QVERIFY(button.isChecked() && button.checkMark()->isVisible());
        button.setChecked(false);
        QVERIFY(button.checkMark()->isVisible());
        button.repaint();
        QVERIFY(!button.checkMark()->isVisible());
        const QImage face = button.grab().toImage();
        QVERIFY(face.pixelColor(39, 29) == Qt::red && face.pixelColor(60, 10) != Qt::red);
    }

    // The compare button toggles the original and says what the next click shows.
    void eyeButtonToggles()
    {
        MyDrawLabel view;
        QPushButton eye;
        QObject::connect(&eye, &QPushButton::clicked, &view, [&] { applyCompareLook(&eye, view.toggleOriginal()); });
        QTest::mouseClick(&eye, Qt::LeftButton);
        QVERIFY(view.isOriginalShown() && eye.styleSheet().contains("contrast_eye_normal_yellow.png"));
        QCOMPARE(eye.toolTip(), QString::fromUtf8("修图效果"));
        QTest::mouseClick(&eye, Qt::LeftButton);
        QVERIFY(!view.isOriginalShown() && !eye.styleSheet().contains("yellow"));
        QCOMPARE(eye.toolTip(), QString::fromUtf8("查看原图"));
    }
};

QTEST_MAIN(TestControls)
#include "tst_controls.moc"
