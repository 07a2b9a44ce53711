#include "SaveDialog.h"

#include "GlobalConstants.h"
#include "ImagePreview.h"
#include "SettingsStore.h"

#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimerEvent>
#include <QWidgetAction>

#include <cstdlib>

namespace {

constexpr char kResourceDir[] = ":/messagebox/Resources/messgaebox/";
constexpr char kFieldLabelStyle[] = "QLabel{font-size:14px;color:#252525;}";
constexpr char kLineEditStyle[] =
    "QLineEdit{font-size:14px;color:#252525;border:2px solid #CCCCCC;border-radius:4px;}";

QString resource(const char* name) { return QString::fromUtf8(kResourceDir) + QString::fromUtf8(name); }

QString storedFolder() { return readSettingValue(kProductKey, kDownLoadPath); }

QLabel* fieldLabel(QWidget* parent, const char* text, int y)
{
    auto* label = new QLabel(QString::fromUtf8(text), parent);
    label->setGeometry(30, y, 60, 17);
    label->setStyleSheet(QString::fromUtf8(kFieldLabelStyle));
    return label;
}

} // namespace

SaveDialog::SaveDialog(QWidget* parent, const QString& path, bool interactive)
    : QDialog(parent), m_path(path), m_interactive(interactive)
{
    setWindowTitle(QStringLiteral("系统设置"));  // never seen: the dialog has no frame
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    setFixedSize(500, 380);
    setStyleSheet(QStringLiteral("QDialog{background-color:#FFFFFF;border-radius:6px;}"));
    buildTitle();
    buildFields();

    // The folder can only be changed in the settings dialog: this slot does
    // not exist, so the connection fails at run time and the button is inert.
    connect(m_folderBtn, SIGNAL(clicked()), this, SLOT(clickedOpenFileBtnBtn()));
    connect(m_okBtn, SIGNAL(clicked()), this, SLOT(clickedOkBtn()));
    connect(m_cancelBtn, SIGNAL(clicked()), this, SLOT(clickedCancelBtn()));

    m_timer.start(500);
    m_timerId = startTimer(500, Qt::CoarseTimer);
    close();
    if (!m_interactive)
        clickedOkBtn();
}

void SaveDialog::buildTitle()
{
    ui.titleFrame = new QFrame(this);
    ui.titleFrame->setGeometry(0, 0, 500, 40);
    ui.titleFrame->setStyleSheet(QStringLiteral(
        "QFrame{background-color:#FA9062;border-top-left-radius:6px;border-top-right-radius:6px;}"));

    ui.closeBtn = new QPushButton(this);
    ui.closeBtn->setGeometry(470, 10, 20, 20);
    ui.closeBtn->setStyleSheet(QStringLiteral("QPushButton{border-image:url(%1);}"
                                              "QPushButton:hover{border-image:url(%2);}"
                                              "QPushButton:pressed{border-image:url(%3);}")
                                   .arg(resource("close_normal.png"), resource("close_hover.png"),
                                        resource("close_pressed.png")));
    connect(ui.closeBtn, SIGNAL(clicked()), this, SLOT(CloseWindow()));

    m_titleLabel = new QLabel(QStringLiteral("图片保存设置"), this);
    m_titleLabel->setGeometry(30, 12, 180, 20);
    m_titleLabel->setStyleSheet(QStringLiteral("QLabel{color:#FFFFFF;font-size:16px;background:#FA9062;}"));
}

void SaveDialog::buildFields()
{
    m_folderLabel = fieldLabel(this, "文件夹:", 74);
    m_folderEdit = new QLineEdit(this);
    m_folderEdit->setGeometry(95, 59, 390, 44);
    m_folderEdit->setStyleSheet(QString::fromUtf8(kLineEditStyle));
    m_folderEdit->setFocusPolicy(Qt::NoFocus);
    m_folderEdit->setTextMargins(15, 0, 0, 0);
    const QString folder = storedFolder();
    if (folder.isEmpty())
        m_folderEdit->setPlaceholderText(QStringLiteral("下载照片存放在此目录下"));
    else
        m_folderEdit->setText(folder);
    m_folderBtn = new QPushButton(m_folderEdit);
    m_folderBtn->setObjectName(QStringLiteral("openFileBtn"));
    m_folderBtn->setFixedSize(24, 24);
    m_folderBtn->setStyleSheet(QStringLiteral("QPushButton{border-image:url(%1);}").arg(resource("open_file.png")));
    auto* folderAction = new QWidgetAction(m_folderEdit);
    folderAction->setDefaultWidget(m_folderBtn);
    m_folderEdit->addAction(folderAction, QLineEdit::TrailingPosition);

    m_nameLabel = fieldLabel(this, "文件名:", 150);
    m_nameEdit = new QLineEdit(this);
    m_nameEdit->setGeometry(95, 135, 390, 44);
    m_nameEdit->setStyleSheet(QString::fromUtf8(kLineEditStyle));
    m_nameEdit->setTextMargins(15, 0, 0, 0);
    if (m_path.isEmpty())
        m_nameEdit->setPlaceholderText(QStringLiteral("文件名"));
    else
        m_nameEdit->setText(fileNameOf(m_path));

    m_formatLabel = fieldLabel(this, "格式:", 210);
    m_formatCombo = new QComboBox(this);
    m_formatCombo->setGeometry(95, 200, 200, 44);
    m_formatCombo->addItem(QStringLiteral("JPG"), 0);
    m_formatCombo->addItem(QStringLiteral("TIFF"), 1);
    m_formatCombo->setCurrentIndex(0);

    m_rateLabel = fieldLabel(this, "保存率:", 280);
    m_rateLabel->setHidden(true);
    m_progressBar = new QProgressBar(this);
    m_progressBar->setGeometry(95, 270, 390, 38);
    m_progressBar->setOrientation(Qt::Horizontal);
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(1);
    m_progressBar->setHidden(true);

    m_okBtn = new QPushButton(QStringLiteral("确定"), this);
    m_okBtn->setGeometry(300, 330, 90, 40);
    m_okBtn->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:#FF7E55;color:#FFFFFF;font-size:16px;border:none;border-radius:4px;}"));
    m_cancelBtn = new QPushButton(QStringLiteral("取消"), this);
    m_cancelBtn->setGeometry(400, 330, 90, 40);
    m_cancelBtn->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:#E8E8E8;color:#6F6F6F;font-size:16px;border:none;border-radius:4px;}"));
}

bool SaveDialog::CloseWindow()
{
    return close();
}

void SaveDialog::clickedOkBtn()
{
    setting st;
    const QString folder = m_folderEdit->text();
    st.savePath = (folder.isEmpty() ? storedFolder() : folder).toLocal8Bit().toStdString();
    const QString name = m_nameEdit->text();
    st.saveName = name.isEmpty() ? std::string("melo") : cutAtLastDot(name).toLocal8Bit().toStdString();
    st.saveFormat = m_formatCombo->currentText().toLocal8Bit().toStdString();
    st.interactive = m_interactive ? 1 : 0;

    m_rateLabel->setHidden(false);
    m_progressBar->setHidden(false);
    m_progress = std::rand() % 30;

    m_setting = st;
    emit onSaveFile(st);
    close();
}

void SaveDialog::clickedCancelBtn()
{
    close();
}

void SaveDialog::timerEvent(QTimerEvent* event)
{
    // Decorative progress: OK closes the dialog right after showing the bar,
    // so in practice the bar is never visible when a tick arrives.
    if (event->timerId() == m_timerId && m_progressBar->isVisible()) {
        if (m_progressBar->value() >= 95) {
            m_timer.stop();
            close();
        } else {
            m_progressBar->setValue(m_progress);
            m_progress += 2;
        }
    }
    QDialog::timerEvent(event);
}
