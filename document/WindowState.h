// The main window is maximised by resizing it to its largest size, never by
// the window system, so its state is kept here for the image view and the
// crop tool, which lay out for the maximised or the normal view size.
#pragma once

bool isMainWindowMaximized();
void setMainWindowMaximized(bool maximized);
