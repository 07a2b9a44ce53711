// Whether the application has been asked to quit while nested event loops
// (modal dialogs) still run.
//
// After QCoreApplication::quit() every event loop returns at once, modal
// dialogs included, until the outermost one has unwound. Code that repeats
// a dialog until it gets an answer must therefore stop when this is true, or
// it spins for ever (whoever asked to quit: the tray, a signal, a page).
#pragma once

bool applicationQuitting();
