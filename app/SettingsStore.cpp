#include "SettingsStore.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include <memory>

QString settingsFileForKey(const QString& keyPath)
{
#ifdef Q_OS_WIN
    Q_UNUSED(keyPath);
    return QString();
#else
    // Kept under the configuration folder, never under the per-user data
    // folder that start-up deletes. Test mode of QStandardPaths isolates it.
    QStringList parts = keyPath.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    for (QString& part : parts) {
        if (part == QLatin1String("..") || part == QLatin1String("."))
            part = QStringLiteral("_");
    }
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return base + QStringLiteral("/MELO/registry/") + parts.join(QLatin1Char('/')) + QStringLiteral(".ini");
#endif
}

static std::unique_ptr<QSettings> openStore(const QString& keyPath)
{
#ifdef Q_OS_WIN
    return std::make_unique<QSettings>(keyPath, QSettings::NativeFormat);
#else
    auto store = std::make_unique<QSettings>(settingsFileForKey(keyPath), QSettings::IniFormat);
    store->setIniCodec("UTF-8");
    return store;
#endif
}

QString readSettingValue(const QString& keyPath, const QString& name)
{
    return openStore(keyPath)->value(name, QString()).toString();
}

void writeSettingValue(const QString& keyPath, const QString& name, const QString& value)
{
    auto store = openStore(keyPath);
    store->setValue(name, value);
    store->sync();
}

void removeSettingValue(const QString& keyPath, const QString& name)
{
    auto store = openStore(keyPath);
    store->remove(name);
    store->sync();
}
