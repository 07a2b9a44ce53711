// COM for the GUI thread (Windows only; a no-op elsewhere). The result is not
// checked: a thread that already has COM keeps it.
#pragma once

void initComForGuiThread();
