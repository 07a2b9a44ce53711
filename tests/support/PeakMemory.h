// The process's peak resident memory, for tests that a large or hostile input
// leaves memory flat.
#pragma once

#include "FileBytes.h"

// The peak resident memory (VmHWM) so far, in KiB; -1 when unknown.
inline qint64 peakResidentKiB()
{
    const QByteArray status = fileBytes(QStringLiteral("/proc/self/status"));
    const int at = status.indexOf("VmHWM:");
    return at < 0 ? -1 : status.mid(at + 6, status.indexOf('\n', at) - at - 6).trimmed().split(' ').first().toLongLong();
}

// Makes the current resident memory the new peak.
inline bool resetPeakResident()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    return clear.open(QIODevice::WriteOnly) && clear.write("5") == 1;
}
