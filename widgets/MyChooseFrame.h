#pragma once

#include <QFrame>

// A frame with two states: closed (grey, the closed-state widget shown) and
// open (accent orange, the open-state widget shown). Both child widgets cover
// the frame; fill them with whatever each state shows. Starts closed.
class MyChooseFrame : public QFrame
{
    Q_OBJECT
public:
    explicit MyChooseFrame(QWidget* parent = nullptr);

    QWidget* closedWidget() const { return m_closedWidget; }
    QWidget* openWidget() const { return m_openWidget; }

public slots:
    void clickedOpenBtn();
    void clickedCloseBtn();
    // True while the open-state widget is shown.
    bool getState();

protected:
    void resizeEvent(QResizeEvent* e) override;

private:
    QWidget* m_closedWidget;
    QWidget* m_openWidget;
};
