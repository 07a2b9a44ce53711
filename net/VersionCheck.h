#pragma once

// Asks the web service for the current release and compares it with the
// installed version. Returns true when the updater must take over. May end
// the process itself (exit code 0) when the service refuses the client.
bool checkClientVersion();
