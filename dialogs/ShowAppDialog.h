// The contact card: a QR code for adding the customer-service account. Left
// only by its close button.
#pragma once

#include <QDialog>

class ShowAppDialog : public QDialog
{
    Q_OBJECT
public:
    // The two texts are accepted for the callers' sake and not used.
    ShowAppDialog(QWidget* parent, const QString& first, const QString& second);

public slots:
    void CloseWindow();
};
