// The white pop-up of eight page layouts. The application uses two: the
// settings page (close behaviour, start with the system, download folder)
// and the close-choice page asked on the first press of the close button.
#pragma once

#include <QDialog>

class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

class SettingDialog : public QDialog
{
    Q_OBJECT
public:
    // Pages setMode() lays out; any other number lays out none.
    enum Page {
        PlainPage = 1,
        SettingsPage = 2,
        DownloadedPage = 3,
        UploadedPage = 4,
        DeletePage = 5,
        CloseChoicePage = 6,
        OrderPage = 7,
        SpacePage = 8,
    };

    explicit SettingDialog(QWidget* parent = nullptr);

    void setTitleText(const QString& text);
    void setBodyText(const QString& text);
    // Lays out page `mode`, then the buttons: OK and Cancel side by side when
    // twoButtons is 1, otherwise one wide OK button.
    void setMode(int mode, int twoButtons);

signals:
    // Declared for the main window, which connects it; the dialog itself
    // never emits it.
    void minSystemTray();

public slots:
    void clickedCloseBtn();
    void clickedCancelBtn();
    void clickedOkBtn();
    void clickedOpenFileBtnBtn();

private:
    void setBackground(const char* picture, int frameHeight = 188);
    void placeText(QLabel* label, const QString& text, const QRect& geometry, const QString& style);
    void showCloseChoice(int minimiseY, int exitY, const QString& minimiseText);
    void layoutSettingsPage();
    void layoutCloseChoicePage();

    QFrame* m_topframe = nullptr;
    QPushButton* m_closeBtn = nullptr;
    QLabel* m_bodyLabel = nullptr;
    QLabel* m_titleLabel = nullptr;
    QCheckBox* m_autostartBox = nullptr;
    QRadioButton* m_exitRadio = nullptr;
    QRadioButton* m_minRadio = nullptr;
    QPushButton* m_okBtn = nullptr;
    QPushButton* m_cancelBtn = nullptr;
    QLineEdit* m_folderEdit = nullptr;  // only on the settings page
};
