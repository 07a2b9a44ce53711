// The page layouts of SettingDialog.
#include "SettingDialog.h"

#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWidgetAction>

namespace {

const char kFolderHint[] = "下载照片存放在此目录下";
const char kExitText[] = "直接退出程序";

} // namespace

void SettingDialog::setBackground(const char* picture, int frameHeight)
{
    m_topframe->setGeometry(0, 0, 540, frameHeight);
    m_topframe->setStyleSheet(
        QStringLiteral("QFrame#topframe{border-image:url(:/messagebox/Resources/messgaebox/%1);}")
            .arg(QLatin1String(picture)));
}

void SettingDialog::placeText(QLabel* label, const QString& text, const QRect& geometry, const QString& style)
{
    label->setText(text);
    label->setGeometry(geometry);
    label->setStyleSheet(style);
}

// The exit radio is pre-checked only when "directClose" reads as 1; anything
// else, an absent value included, pre-checks minimising.
void SettingDialog::showCloseChoice(int minimiseY, int exitY, const QString& minimiseText)
{
    m_minRadio->setText(minimiseText);
    m_minRadio->setGeometry(75, minimiseY, 415, 15);
    m_exitRadio->setText(QString::fromUtf8(kExitText));
    m_exitRadio->setGeometry(75, exitY, 415, 15);
    m_minRadio->show();
    m_exitRadio->show();
    const bool exitChosen = readSettingValue(kProductKey, kDirectClose).toInt() == 1;
    m_exitRadio->setChecked(exitChosen);
    m_minRadio->setChecked(!exitChosen);
}

void SettingDialog::setMode(int mode, int twoButtons)
{
    const QString bodyStyle = QStringLiteral("font-size:20px; color:rgb(37,37,37); background:transparent;");
    switch (mode) {
    case PlainPage:
        setBackground("normal.png");
        break;
    case SettingsPage:
        setBackground("setting.png");
        layoutSettingsPage();
        break;
    case DownloadedPage:
        setBackground("download_true.png");
        placeText(m_titleLabel, QStringLiteral("恭喜你"), QRect(225, 222, 150, 20),
                  QStringLiteral("font-size:20px; font-weight:bold; color:rgb(37,37,37); background:transparent;"));
        placeText(m_bodyLabel, QStringLiteral("图片已下载完成！"), QRect(205, 280, 300, 20), bodyStyle);
        m_okBtn->setText(QStringLiteral("我知道了"));
        m_cancelBtn->setText(QStringLiteral("前往查看"));
        break;
    case UploadedPage:
        setBackground("upload_true.png");
        placeText(m_bodyLabel, QStringLiteral("图片已全部上传完成"), QRect(180, 245, 250, 20), bodyStyle);
        m_okBtn->setText(QStringLiteral("打开下载路径"));
        m_cancelBtn->setText(QStringLiteral("继续修图"));
        break;
    case DeletePage:
        setBackground("delete.png");
        placeText(m_bodyLabel, QStringLiteral("确定要删除该图片吗？"), QRect(180, 245, 250, 20), bodyStyle);
        break;
    case CloseChoicePage:
        setBackground("closeChoose.png", 187);
        layoutCloseChoicePage();
        break;
    case OrderPage:
        setBackground("order.png");
        break;
    case SpacePage:
        setBackground("space_dis.png");
        break;
    default:
        break;
    }

    if (twoButtons == 1) {
        m_okBtn->setGeometry(292, 430, 200, 56);
        m_cancelBtn->setGeometry(75, 430, 200, 56);
        m_cancelBtn->show();
    } else {
        m_okBtn->setGeometry(75, 430, 415, 56);
        m_cancelBtn->hide();
    }
}

void SettingDialog::layoutSettingsPage()
{
    // The box always opens unticked; the stored value is not read back.
    m_autostartBox->setGeometry(75, 190, 415, 15);
    m_autostartBox->setChecked(false);
    m_autostartBox->show();

    auto* closeOptions = new QLabel(QStringLiteral("关闭程序选项："), this);
    closeOptions->setObjectName(QStringLiteral("closeOptionsLabel"));
    closeOptions->setGeometry(40, 215, 120, 20);
    closeOptions->setStyleSheet(QStringLiteral("color:#FF7316; font-size:16px;"));
    closeOptions->show();

    showCloseChoice(240, 275, QStringLiteral("最小化到托盘"));

    placeText(m_titleLabel, QStringLiteral("下载到："), QRect(75, 318, 80, 20),
              QStringLiteral("font-size:18px; font-weight:bold; color:rgb(37,37,37);"));
    placeText(m_bodyLabel, QString::fromUtf8(kFolderHint), QRect(155, 318, 350, 20),
              QStringLiteral("font-size:14px; color:rgb(37,37,37);"));

    m_folderEdit = new QLineEdit(this);
    m_folderEdit->setObjectName(QStringLiteral("folderEdit"));
    m_folderEdit->setGeometry(75, 345, 415, 44);
    m_folderEdit->setStyleSheet(QStringLiteral(
        "QLineEdit{font-size:16px; font-weight:bold; color:rgb(255,123,84);"
        " border:2px solid #CCCCCC; border-radius:4px;}"));
    m_folderEdit->setTextMargins(15, 0, 0, 0);
    m_folderEdit->setFocusPolicy(Qt::NoFocus);
    const QString stored = readSettingValue(kProductKey, kDownLoadPath);
    m_folderEdit->setPlaceholderText(stored.isEmpty() ? QString::fromUtf8(kFolderHint) : stored);

    auto* openButton = new QPushButton(m_folderEdit);
    openButton->setObjectName(QStringLiteral("openFileBtn"));
    openButton->setCursor(Qt::PointingHandCursor);
    openButton->setStyleSheet(QStringLiteral(
        "QPushButton{border-image:url(:/messagebox/Resources/messgaebox/open_file.png); border:none;}"));
    auto* openAction = new QWidgetAction(m_folderEdit);
    openAction->setDefaultWidget(openButton);
    m_folderEdit->addAction(openAction, QLineEdit::TrailingPosition);
    connect(openButton, &QPushButton::clicked, this, &SettingDialog::clickedOpenFileBtnBtn);
    m_folderEdit->show();
}

void SettingDialog::layoutCloseChoicePage()
{
    placeText(m_bodyLabel, QStringLiteral("点击关闭后，请选择"), QRect(80, 200, 250, 20),
              QStringLiteral("font-size:18px; font-weight:bold; color:rgb(37,37,37); background:transparent;"));
    showCloseChoice(245, 280, QStringLiteral("最小化到系统托盘，不退出程序"));
}
