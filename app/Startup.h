#pragma once

// The program's start-up routine. Returns the process exit code: 1 when
// another copy is running, 0 after handing over to the updater, otherwise the
// event loop's result.
int meloMain(int argc, char* argv[]);
