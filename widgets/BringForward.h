// Brings a top-level window back in front of the user: restored if it was
// minimised, shown if it was hidden (in the tray), raised and activated.
#pragma once

class QWidget;

void bringWindowForward(QWidget* window);
