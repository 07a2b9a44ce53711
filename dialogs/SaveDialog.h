// The modal "picture save settings" dialog: folder (from the settings), file
// name and format. OK hands a `setting` record to whoever listens on
// onSaveFile and closes; the main window does the writing.
#pragma once

#include "SaveSetting.h"

#include <QDialog>
#include <QTimer>

class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

class SaveDialog : public QDialog
{
    Q_OBJECT
public:
    // `path` is the open photograph (empty when none). A dialog that is not
    // interactive presses OK itself at the end of construction.
    SaveDialog(QWidget* parent, const QString& path, bool interactive);

    // The record of the last OK, as emitted.
    const setting& lastSetting() const { return m_setting; }

signals:
    void onSaveFile(setting& st);

public slots:
    bool CloseWindow();
    void clickedOkBtn();
    void clickedCancelBtn();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void buildTitle();
    void buildFields();

    // Title frame and its close button.
    struct Ui {
        QFrame* titleFrame = nullptr;
        QPushButton* closeBtn = nullptr;
    } ui;

    QString m_path;
    bool m_interactive = true;
    QLabel* m_titleLabel = nullptr;
    QLabel* m_folderLabel = nullptr;
    QLineEdit* m_folderEdit = nullptr;
    QPushButton* m_folderBtn = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLineEdit* m_nameEdit = nullptr;
    QLabel* m_formatLabel = nullptr;
    QComboBox* m_formatCombo = nullptr;
    QLabel* m_rateLabel = nullptr;
    QProgressBar* m_progressBar = nullptr;
    QPushButton* m_okBtn = nullptr;
    QPushButton* m_cancelBtn = nullptr;
    int m_progress = 0;
    QTimer m_timer;
    int m_timerId = 0;
    setting m_setting;
};
