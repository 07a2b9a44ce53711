// The installer's part of the settings: "InstallLocation", "DisplayVersion"
// and "channel" under the product key, and the menu entry of the program.
//
//   melo-install-keys [--install-location DIR --version V --channel C]
//                     [--desktop-entry FILE --program PATH]
#include "DesktopEntry.h"
#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Records an installation of MELO."));
    parser.addHelpOption();
    const QCommandLineOption location(QStringLiteral("install-location"),
                                      QStringLiteral("Install folder of the program."), QStringLiteral("dir"));
    const QCommandLineOption version(QStringLiteral("version"), QStringLiteral("Installed version."),
                                     QStringLiteral("version"), buildVersion());
    const QCommandLineOption channel(QStringLiteral("channel"), QStringLiteral("Distribution channel."),
                                     QStringLiteral("channel"));
    const QCommandLineOption entry(QStringLiteral("desktop-entry"),
                                   QStringLiteral("Desktop entry file to write."), QStringLiteral("file"));
    const QCommandLineOption program(QStringLiteral("program"),
                                     QStringLiteral("Program the desktop entry starts."), QStringLiteral("path"));
    parser.addOptions({location, version, channel, entry, program});
    parser.process(app);

    QTextStream err(stderr);
    if (parser.isSet(entry) != parser.isSet(program)) {
        err << "melo-install-keys: --desktop-entry and --program go together\n";
        return 2;
    }
    if (parser.isSet(location)) {
        const QString folder = QDir::cleanPath(QDir(parser.value(location)).absolutePath());
        writeSettingValue(kProductKey, kInstallLocation, QDir::toNativeSeparators(folder));
        writeSettingValue(kProductKey, kDisplayVersion, parser.value(version));
        writeSettingValue(kProductKey, kChannel, parser.value(channel));
        QTextStream(stdout) << "melo-install-keys: recorded " << folder << " version "
                            << parser.value(version) << " in " << settingsFileForKey(kProductKey) << "\n";
    }
    if (parser.isSet(entry) && !writeDesktopEntry(parser.value(entry), parser.value(program))) {
        err << "melo-install-keys: cannot write " << parser.value(entry) << "\n";
        return 1;
    }
    return 0;
}
