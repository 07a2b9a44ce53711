// Qt's own texts (standard buttons, file and folder dialogs, context menus)
// in Chinese, like the rest of the interface, whatever the system locale.
#pragma once

class QCoreApplication;

// Name of Qt's translation catalogue the program loads.
inline constexpr char kQtTranslationName[] = "qtbase_zh_CN";

// Loads the catalogue from Qt's translations folder, else from the
// "translations" folder beside the executable, and installs it on the
// application. False when neither holds it: Qt's texts then stay English.
bool installQtTranslation(QCoreApplication* app);
