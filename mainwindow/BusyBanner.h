// The strip at the foot of the image view that says what the editor is busy
// with ("正在保存 a.jpg …") beside a running progress bar, while the work goes
// on in the background. Hidden when idle.
#pragma once

#include <QFrame>

class QLabel;
class QProgressBar;

class BusyBanner : public QFrame
{
    Q_OBJECT
public:
    explicit BusyBanner(QWidget* parent);

    // Shows `text`, centred at the foot of the parent.
    void showBusy(const QString& text);
    QString text() const;

private:
    QLabel* m_label;
    QProgressBar* m_bar;
};
