// The white, frameless card the small dialogs share.
#pragma once

#include <QSize>

class QDialog;

// Object name, window title "系统设置" (translated in the object name's
// context), no frame, fixed size and the white rounded card style.
void setupCardDialog(QDialog* dialog, const char* objectName, const QSize& size);
