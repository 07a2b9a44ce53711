#pragma once

#include <QColor>
#include <QList>
#include <QPair>
#include <QSize>
#include <QString>
#include <QStringList>

// One picture of the artwork list: where it goes, how big it is and which SVG
// sources draw it. The same text form is used by resources/artwork.list and
// by the render command line, so both read through parseArtEntry().
//
//   <prefix> <name> <W>x<H> <a.svg>[+<b.svg>...] [key=value ...]
//
// Options:
//   recolor=#RRGGBB:#RRGGBB  replace one colour in the SVG text (repeatable)
//   ico=16,32,...            write an icon file holding these sizes
//   small=<c.svg>            simplified drawing for icon sizes of 32 and less
//   matte=#RRGGBB            opaque background (JPEG has no alpha)
//   bg=#RRGGBB               background the picture sits on in the app
//   sheet=plain|border|check how the contact sheet presents it
struct ArtEntry
{
    QString prefix;
    QString name;
    QSize size;
    QStringList sources;
    QList<QPair<QString, QString>> recolors;
    QList<int> icoSizes;
    QString smallSource;
    QColor matte;
    QColor background;
    QString sheetStyle = QStringLiteral("plain");
};

// Parses the whitespace-separated fields of one entry. Returns false with a
// message in *error when a field is missing or malformed.
bool parseArtEntry(const QStringList &fields, ArtEntry *entry, QString *error);

// Reads every entry of an artwork list file ('#' at the line start or after a blank starts a comment).
bool readArtList(const QString &path, QList<ArtEntry> *entries, QString *error);
