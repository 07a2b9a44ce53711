#include "SettingDialog.h"

#include "DesktopEntry.h"
#include "GlobalConstants.h"
#include "NoticeBox.h"
#include "SettingsStore.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace {

const char kFolderMessage[] = "文件存储地址不能为空，请重新输入！";

QString messageBoxImage(const char* name)
{
    return QStringLiteral(":/messagebox/Resources/messgaebox/") + QLatin1String(name);
}

} // namespace

SettingDialog::SettingDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("SettingDialog"));
    setWindowTitle(QStringLiteral("系统设置"));
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    setFixedSize(540, 520);
    setStyleSheet(QStringLiteral("QDialog{background-color: #FFFFFF; border:none; }"));

    m_topframe = new QFrame(this);
    m_topframe->setObjectName(QStringLiteral("topframe"));
    m_topframe->setGeometry(0, 0, 540, 188);

    m_closeBtn = new QPushButton(this);
    m_closeBtn->setObjectName(QStringLiteral("closeBtn"));
    m_closeBtn->setGeometry(500, 20, 20, 20);
    m_closeBtn->setStyleSheet(QStringLiteral("QPushButton{border-image:url(%1);}"
                                             "QPushButton:hover{border-image:url(%2);}"
                                             "QPushButton:pressed{border-image:url(%3);}")
                                  .arg(messageBoxImage("close_normal.png"), messageBoxImage("close_hover.png"),
                                       messageBoxImage("close_pressed.png")));

    m_bodyLabel = new QLabel(this);
    m_bodyLabel->setObjectName(QStringLiteral("bodyLabel"));
    m_bodyLabel->setGeometry(80, 210, 380, 100);
    m_bodyLabel->setStyleSheet(QStringLiteral("font-size:20px; color:rgb(37,37,37);"));

    m_titleLabel = new QLabel(this);
    m_titleLabel->setObjectName(QStringLiteral("titleLabel"));
    m_titleLabel->setGeometry(80, 35, 200, 21);
    m_titleLabel->setStyleSheet(QStringLiteral("font-size:20px; color:white;"));

    m_autostartBox = new QCheckBox(QStringLiteral("开机自动启动"), this);
    m_autostartBox->setObjectName(QStringLiteral("autostartBox"));
    m_autostartBox->setStyleSheet(
        QStringLiteral("QCheckBox{font-size:14px; font-weight:bold; color:rgb(37,37,37);}"
                       "QCheckBox::indicator{width:15px; height:15px;}"
                       "QCheckBox::indicator:unchecked{image:url(%1);}"
                       "QCheckBox::indicator:checked{image:url(%2);}")
            .arg(messageBoxImage("check_box_normal.png"), messageBoxImage("check_box_normal_hot.png")));
    m_autostartBox->hide();

    const QString radioStyle =
        QStringLiteral("QRadioButton{font-size:14px; color:rgb(37,37,37);}"
                       "QRadioButton::indicator{width:12px; height:12px;}"
                       "QRadioButton::indicator:unchecked{image:url(%1);}"
                       "QRadioButton::indicator:checked{image:url(%2);}")
            .arg(messageBoxImage("check_point_normal.png"), messageBoxImage("check_point_normal_check.png"));
    m_exitRadio = new QRadioButton(this);
    m_exitRadio->setObjectName(QStringLiteral("exitRadio"));
    m_exitRadio->setStyleSheet(radioStyle);
    m_exitRadio->hide();
    m_minRadio = new QRadioButton(this);
    m_minRadio->setObjectName(QStringLiteral("minRadio"));
    m_minRadio->setStyleSheet(radioStyle);
    m_minRadio->hide();

    m_okBtn = new QPushButton(QStringLiteral("确定"), this);
    m_okBtn->setObjectName(QStringLiteral("okBtn"));
    m_okBtn->setStyleSheet(QStringLiteral(
        "QPushButton{font-size:18px; background-color:#FF7E55; color:white; border:none;}"
        "QPushButton:hover{background-color:#FB9061;}"
        "QPushButton:pressed{background-color:#FCA179;}"));
    m_cancelBtn = new QPushButton(QStringLiteral("取消"), this);
    m_cancelBtn->setObjectName(QStringLiteral("cancelBtn"));
    m_cancelBtn->setStyleSheet(QStringLiteral(
        "QPushButton{font-size:18px; background-color:#E8E8E8; color:#6F6F6F; border:none;}"
        "QPushButton:hover{background-color:#B8B8B8;}"
        "QPushButton:pressed{background-color:#F3F0F0;}"));

    connect(m_closeBtn, &QPushButton::clicked, this, &SettingDialog::clickedCloseBtn);
    connect(m_okBtn, &QPushButton::clicked, this, &SettingDialog::clickedOkBtn);
    connect(m_cancelBtn, &QPushButton::clicked, this, &SettingDialog::clickedCancelBtn);
}

void SettingDialog::setTitleText(const QString& text)
{
    m_titleLabel->setText(text);
}

void SettingDialog::setBodyText(const QString& text)
{
    m_bodyLabel->setText(text);
}

void SettingDialog::clickedCloseBtn()
{
    reject();
}

void SettingDialog::clickedCancelBtn()
{
    reject();
}

void SettingDialog::clickedOpenFileBtnBtn()
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, QStringLiteral("选择一个文件夹来存储"), QStringLiteral("/"), QFileDialog::ShowDirsOnly);
    if (folder.isEmpty()) {
        showNotice(QString::fromUtf8(kFolderMessage));
        return;
    }
    m_folderEdit->setText(folder + QLatin1Char('/'));
}

void SettingDialog::clickedOkBtn()
{
    if (m_exitRadio->isChecked())
        writeSettingValue(kProductKey, kDirectClose, QStringLiteral("1"));
    else if (m_minRadio->isChecked())
        writeSettingValue(kProductKey, kDirectClose, QStringLiteral("0"));

    if (m_autostartBox->isChecked()) {
        writeSettingValue(kAutostartKey, kProductName,
                          QCoreApplication::applicationDirPath() + QStringLiteral("//")
                              + QString::fromUtf8(kExeName));
#ifndef Q_OS_WIN
        // Off Windows the desktop starts programs from their autostart entry.
        writeDesktopEntry(autostartEntryPath(), QCoreApplication::applicationFilePath());
#endif
    }

    if (m_folderEdit) {
        // Without a new choice the placeholder, i.e. the stored folder, is
        // checked and stored again; the hint text never exists as a path.
        QString folder = m_folderEdit->text();
        if (folder.isEmpty())
            folder = m_folderEdit->placeholderText();
        if (folder.isEmpty() || !QFile::exists(folder)) {
            showNotice(QString::fromUtf8(kFolderMessage));
            return;
        }
        writeSettingValue(kProductKey, kDownLoadPath, folder);
    }
    accept();
}
