// The whole content of a file, empty when it cannot be read.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

inline QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
