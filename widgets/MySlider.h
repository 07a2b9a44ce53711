#pragma once

#include <QSlider>

// The strength slider: a press or a drag jumps straight to the pointer, and
// a press on a disabled slider tells the user to choose a preset first.
class MySlider : public QSlider
{
    Q_OBJECT
public:
    explicit MySlider(QWidget* parent = nullptr);
    explicit MySlider(Qt::Orientation orientation, QWidget* parent = nullptr);

    // The value under x for a slider of the given width and range: linear
    // over the whole width in double precision, truncated, not clamped
    // (setValue clamps). The handle's width is not taken into account.
    static int valueAt(int x, int width, int minimum, int maximum);

signals:
    void sliderValueChanged(QSlider* slider);
    void sliderDblClickResetImage();

public slots:
    // Re-emits a value change as sliderValueChanged(this), so a receiver can
    // tell the sliders apart; connected to valueChanged(int).
    void onSliderValueChanged(int count);

protected:
    bool event(QEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;

private:
    void jumpTo(int x);
};
