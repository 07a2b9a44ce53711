// render-art: draws the application's artwork from its SVG sources.
//
//   render-art render <svg-dir> <out-file> <prefix> <name> <WxH> <sources> [options]
//   render-art sheet <artwork.list> <out-dir> <sheet.png> [photo]
//
// "render" takes the fields of one line of resources/artwork.list (see
// ArtEntry.h) and writes one picture; "sheet" gathers every rendered picture
// of the list into one contact sheet for review.
#include "ArtEntry.h"
#include "ArtRender.h"
#include "ContactSheet.h"

#include <QGuiApplication>
#include <QStringList>

#include <cstdio>

namespace {

// The offscreen platform complains about a missing runtime folder, which the
// renderer never uses; everything else (SVG warnings above all) stays visible.
void filterMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
        return;
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

int fail(const QString &message)
{
    std::fprintf(stderr, "render-art: %s\n", qPrintable(message));
    return 1;
}

int renderCommand(const QStringList &args)
{
    if (args.size() < 6)
        return fail(QStringLiteral("render needs <svg-dir> <out-file> <prefix> <name> <WxH> <sources>"));
    ArtEntry entry;
    QString error;
    if (!parseArtEntry(args.mid(2), &entry, &error))
        return fail(error);
    if (!writeArt(entry, args[0], args[1], &error))
        return fail(error);
    return 0;
}

int sheetCommand(const QStringList &args)
{
    if (args.size() < 3)
        return fail(QStringLiteral("sheet needs <artwork.list> <out-dir> <sheet.png> [photo]"));
    QList<ArtEntry> entries;
    QString error;
    if (!readArtList(args[0], &entries, &error))
        return fail(error);
    const QImage sheet = contactSheet(entries, args[1], args.value(3), &error);
    if (sheet.isNull())
        return fail(error);
    if (!sheet.save(args[2]))
        return fail(QStringLiteral("cannot write %1").arg(args[2]));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // Fonts and the SVG text renderer need a GUI application, never a screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(filterMessages);
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const QString command = args.value(0);
    if (command == QLatin1String("render"))
        return renderCommand(args.mid(1));
    if (command == QLatin1String("sheet"))
        return sheetCommand(args.mid(1));
    return fail(QStringLiteral("usage: render-art render|sheet ..."));
}
