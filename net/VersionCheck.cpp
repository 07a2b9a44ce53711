#include "VersionCheck.h"

// Until the request layer exists the check reports "no update".
bool checkClientVersion()
{
    return false;
}
