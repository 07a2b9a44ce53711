#include "BusyBanner.h"

#include <QLabel>
#include <QProgressBar>

namespace {
constexpr int kWidth = 420;
constexpr int kHeight = 44;
constexpr int kBottomMargin = 24;
}

BusyBanner::BusyBanner(QWidget* parent) : QFrame(parent), m_label(new QLabel(this)), m_bar(new QProgressBar(this))
{
    setObjectName(QStringLiteral("busyBanner"));
    setStyleSheet(QStringLiteral(
        "QFrame#busyBanner{background-color:rgba(40,38,38,230); border:1px solid #5A5656; border-radius:6px;}"
        "QLabel{color:#E6E6E6; font-size:14px; background:transparent; border:none;}"
        "QProgressBar{background-color:#2B2929; border:none; border-radius:3px; max-height:6px;}"
        "QProgressBar::chunk{background-color:#FF7316; border-radius:3px;}"));
    // No range: a bar that runs, since the encoder tells no progress.
    m_bar->setRange(0, 0);
    m_bar->setTextVisible(false);
    m_label->setGeometry(16, 0, kWidth - 168, kHeight);
    m_bar->setGeometry(kWidth - 136, (kHeight - 6) / 2, 120, 6);
    hide();
}

void BusyBanner::showBusy(const QString& text)
{
    m_label->setText(text);
    const QWidget* area = parentWidget();
    setGeometry((area->width() - kWidth) / 2, area->height() - kHeight - kBottomMargin, kWidth, kHeight);
    raise();
    show();
}

QString BusyBanner::text() const
{
    return m_label->text();
}
