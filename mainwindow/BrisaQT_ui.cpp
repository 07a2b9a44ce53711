// The window's widget tree: central widget, title bar and the three stacked
// views. The home page is created last so it lies on top at start.
#include "BrisaQT.h"

#include "FrameLayout.h"
#include "GlobalConstants.h"

#include <QCoreApplication>
#include <QFrame>
#include <QWebEngineView>

void BrisaQT::buildUi()
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("BrisaQTClass"));
    resize(FrameLayout::kMaximizedSize);
    setMaximumSize(FrameLayout::kMaximizedSize);
    setAttribute(Qt::WA_MouseTracking);

    m_mainWidget = new QWidget(this);
    m_mainWidget->setObjectName(QStringLiteral("mainWidget"));
    m_mainWidget->setAttribute(Qt::WA_MouseTracking);
    m_mainWidget->setStyleSheet(QStringLiteral("QWidget{ background-color:#333333; border:none;}"));

    m_titleframe = new QFrame(m_mainWidget);
    m_titleframe->setObjectName(QStringLiteral("titleframe"));
    m_titleframe->setGeometry(0, 0, 1300, FrameLayout::kTitleBarHeight);

    const QRect initialView(0, FrameLayout::kTitleBarHeight, 1300, 700);
    m_webEngineView = new QWebEngineView(m_mainWidget);
    m_webEngineView->setObjectName(QStringLiteral("webEngineView"));
    m_webEngineView->setGeometry(initialView);

    m_myWidget = new QWidget(m_mainWidget);
    m_myWidget->setObjectName(QStringLiteral("myWidget"));
    m_myWidget->setGeometry(initialView);
    m_myWidget->setAttribute(Qt::WA_MouseTracking);
    m_myWidget->setStyleSheet(QStringLiteral("QWidget#myWidget{background-color:#353232;}"));
    m_myWidget->hide();

    m_webEngineView2 = new QWebEngineView(m_mainWidget);
    m_webEngineView2->setObjectName(QStringLiteral("webEngineView2"));
    m_webEngineView2->setGeometry(initialView);

    setCentralWidget(m_mainWidget);
    setWindowTitle(QCoreApplication::translate("BrisaQTClass", kMainWindowTitle));
    QMetaObject::connectSlotsByName(this);
}
