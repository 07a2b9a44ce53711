// A real small file system for failed-write tests: a tmpfs of a few
// kilobytes (full after the first small file) or a read-only one, mounted on
// a temporary folder while the object lives. Needs the right to mount (the
// tests run as root on the build machines); mounted() says whether it worked.
#pragma once

#include <QString>
#include <QTemporaryDir>

#include <sys/mount.h>

class SmallDisk
{
public:
    explicit SmallDisk(const char* options)
    {
        m_mounted = m_dir.isValid()
                    && ::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs", 0, options) == 0;
    }
    ~SmallDisk()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_dir.path()).constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return m_mounted; }
    QString path() const { return m_dir.path(); }
    // Makes a mounted disk read-only from now on.
    bool makeReadOnly()
    {
        return m_mounted && ::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs",
                                    MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
};
