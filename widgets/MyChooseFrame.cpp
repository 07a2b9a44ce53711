#include "MyChooseFrame.h"

MyChooseFrame::MyChooseFrame(QWidget* parent)
    : QFrame(parent), m_closedWidget(new QWidget(this)), m_openWidget(new QWidget(this))
{
    clickedCloseBtn();
}

void MyChooseFrame::clickedOpenBtn()
{
    m_closedWidget->hide();
    m_openWidget->show();
    setStyleSheet(QStringLiteral("QFrame{background-color: #FF7316; border-style:solid;border-color:#FF7316;"
                                 "border-width:1px;border-radius:2px; }"));
}

void MyChooseFrame::clickedCloseBtn()
{
    m_openWidget->hide();
    m_closedWidget->show();
    setStyleSheet(QStringLiteral("QFrame{background-color: #333333; border-style:solid;border-color:#333333;"
                                 "border-width:1px;border-radius:2px;}"));
}

bool MyChooseFrame::getState()
{
    // Asked of the child itself, so the answer holds before the frame is shown.
    return !m_openWidget->isHidden();
}

void MyChooseFrame::resizeEvent(QResizeEvent* e)
{
    m_closedWidget->setGeometry(rect());
    m_openWidget->setGeometry(rect());
    QFrame::resizeEvent(e);
}
