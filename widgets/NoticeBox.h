// The notice box every plain message of the application uses: a modal
// QMessageBox without icon and without parent, fixed-size dialog hint, and a
// Yes button (Yes and No for questions). Only Yes counts as consent.
#pragma once

#include <QString>

inline constexpr char kNoticeTitle[] = "提示";

// Shows a message with a single Yes button and waits until it is closed.
void showNotice(const QString& text, const QString& title = QString::fromUtf8(kNoticeTitle));
// Asks a question with Yes and No; true only when the answer is Yes.
bool askNotice(const QString& text, const QString& title = QString::fromUtf8(kNoticeTitle));
