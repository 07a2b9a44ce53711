#include "MyDrawLutButton.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

MyDrawLutButton::MyDrawLutButton(QWidget* parent) : QPushButton(parent), m_checkMark(new QLabel(this))
{
    m_checkMark->setGeometry(rect());
    m_checkMark->setStyleSheet(QStringLiteral(
        "QLabel{background-image:url(:/BrisaQT/Resources/lutCheck.png);"
        "background-color:transparent;border:none;}"));
    // Clicks on the mark belong to the button.
    m_checkMark->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_checkMark->hide();
}

void MyDrawLutButton::setThumbnail(const QPixmap& pixmap)
{
    m_thumbnail = pixmap;
    update();
}

void MyDrawLutButton::setCaption(const QString& caption)
{
    m_caption = caption;
    update();
}

void MyDrawLutButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (!m_thumbnail.isNull())
        painter.drawPixmap(m_thumbnail.rect(), m_thumbnail);
    painter.drawText(QRect(0, 0, width(), height() - 5), Qt::AlignHCenter | Qt::AlignBottom, m_caption);
    m_checkMark->setVisible(isChecked());
}

void MyDrawLutButton::resizeEvent(QResizeEvent* e)
{
    m_checkMark->setGeometry(rect());
    QPushButton::resizeEvent(e);
}

void MyDrawLutButton::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::LeftButton)
        emit mouseButtonLeftPress();
    QPushButton::mousePressEvent(e);
}
