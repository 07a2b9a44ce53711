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
    const QRect captionArea(0, 0, width(), height() - 5);
    const int captionFlags = Qt::AlignHCenter | Qt::AlignBottom;
    if (!m_thumbnail.isNull()) {
        painter.drawPixmap(m_thumbnail.rect(), m_thumbnail);
        // Square and upright photographs fill the button down to the
        // caption: a dark band under it keeps it readable on any picture.
        const QRect text = painter.boundingRect(captionArea, captionFlags, m_caption);
        if (!m_caption.isEmpty() && text.center().y() < m_thumbnail.height())
            painter.fillRect(QRect(0, text.top() - 2, width(), height() - text.top() + 2) & m_thumbnail.rect(),
                             QColor(0, 0, 0, 150));
    }
    painter.drawText(captionArea, captionFlags, m_caption);
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
