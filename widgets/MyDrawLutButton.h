#pragma once

#include <QPixmap>
#include <QPushButton>
#include <QString>

class QLabel;

// A preset button: draws the graded thumbnail at its own size from the
// top-left corner and the caption centred 5 px above the bottom edge (the
// button face itself is not painted), and lays a check mark over the whole
// button while it is checked. The mark follows the checked state at the
// next repaint.
class MyDrawLutButton : public QPushButton
{
    Q_OBJECT
public:
    explicit MyDrawLutButton(QWidget* parent = nullptr);

    void setThumbnail(const QPixmap& pixmap);
    const QPixmap& thumbnail() const { return m_thumbnail; }
    void setCaption(const QString& caption);
    const QString& caption() const { return m_caption; }
    // The check-mark label (a child covering the button).
    QLabel* checkMark() const { return m_checkMark; }

signals:
    // A left-button press; the button's own press and click follow as usual.
    void mouseButtonLeftPress();

protected:
    void paintEvent(QPaintEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;

private:
    QLabel* m_checkMark;
    QPixmap m_thumbnail;
    QString m_caption;
};
