// The account card that drops down below the title bar: picture, name,
// voucher balance, log-out and two member pages. Created once by the main
// window and shown and hidden many times; it hides as soon as the pointer
// leaves it or it loses the focus.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

class UserDialog : public QDialog
{
    Q_OBJECT
public:
    // The two texts are accepted for the callers' sake and not used.
    UserDialog(QWidget* parent, const QString& first, const QString& second);

    // Name as given; the count exactly as the page sent it.
    void setUserInfo(const QString& name, const QString& count);
    // Shows the picture scaled into the face label, aspect kept. A file that
    // readAvatarPicture refuses leaves the previous picture and returns false.
    bool setUserPicture(const QString& path);

signals:
    void userLogout();

public slots:
    void clickedQuitBtn();
    void clickedLookDetailed();
    void clickedRecharge();
    void CloseWindow();

protected:
    bool event(QEvent* event) override;

private:
    QLabel* m_faceLabel = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLabel* m_numLabel = nullptr;
};
