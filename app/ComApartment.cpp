#include "ComApartment.h"

#include <QtGlobal>

#ifdef Q_OS_WIN
#include <objbase.h>
#endif

void initComForGuiThread()
{
#ifdef Q_OS_WIN
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
#endif
}
