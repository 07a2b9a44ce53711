#include "ArtEntry.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

namespace {

bool parseSize(const QString &text, QSize *size)
{
    static const QRegularExpression re(QStringLiteral("^(\\d+)x(\\d+)$"));
    const auto m = re.match(text);
    if (!m.hasMatch())
        return false;
    *size = QSize(m.captured(1).toInt(), m.captured(2).toInt());
    return size->width() > 0 && size->height() > 0;
}

bool parseColor(const QString &text, QColor *color)
{
    *color = QColor(text);
    return color->isValid();
}

bool parseOption(const QString &key, const QString &value, ArtEntry *e)
{
    if (key == QLatin1String("recolor")) {
        const QStringList pair = value.split(QLatin1Char(':'));
        QColor from, to;
        if (pair.size() != 2 || !parseColor(pair[0], &from) || !parseColor(pair[1], &to))
            return false;
        e->recolors.append({pair[0], pair[1]});
        return true;
    }
    if (key == QLatin1String("ico")) {
        for (const QString &s : value.split(QLatin1Char(','))) {
            bool ok = false;
            const int n = s.toInt(&ok);
            if (!ok || n < 1 || n > 256)
                return false;
            e->icoSizes.append(n);
        }
        return true;
    }
    if (key == QLatin1String("small")) {
        e->smallSource = value;
        return !value.isEmpty();
    }
    if (key == QLatin1String("matte"))
        return parseColor(value, &e->matte);
    if (key == QLatin1String("bg"))
        return parseColor(value, &e->background);
    if (key == QLatin1String("sheet")) {
        e->sheetStyle = value;
        return value == QLatin1String("plain") || value == QLatin1String("border")
               || value == QLatin1String("check");
    }
    return false;
}

} // namespace

bool parseArtEntry(const QStringList &fields, ArtEntry *entry, QString *error)
{
    if (fields.size() < 4) {
        *error = QStringLiteral("expected <prefix> <name> <WxH> <sources> [options]");
        return false;
    }
    ArtEntry e;
    e.prefix = fields[0];
    e.name = fields[1];
    if (!parseSize(fields[2], &e.size)) {
        *error = QStringLiteral("bad size '%1'").arg(fields[2]);
        return false;
    }
    e.sources = fields[3].split(QLatin1Char('+'), Qt::SkipEmptyParts);
    for (int i = 4; i < fields.size(); ++i) {
        const int eq = fields[i].indexOf(QLatin1Char('='));
        if (eq <= 0 || !parseOption(fields[i].left(eq), fields[i].mid(eq + 1), &e)) {
            *error = QStringLiteral("bad option '%1'").arg(fields[i]);
            return false;
        }
    }
    if (e.name.endsWith(QLatin1String(".ico")) && e.icoSizes.isEmpty())
        e.icoSizes.append(e.size.width());
    *entry = e;
    return true;
}

bool readArtList(const QString &path, QList<ArtEntry> *entries, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = QStringLiteral("cannot read %1").arg(path);
        return false;
    }
    QTextStream in(&file);
    int lineNo = 0;
    while (!in.atEnd()) {
        ++lineNo;
        // A comment starts with '#' at the line start or after a blank, so
        // colours such as bg=#494949 stay intact.
        static const QRegularExpression comment(QStringLiteral("(^|\\s)#.*$"));
        const QString line = in.readLine().remove(comment).trimmed();
        if (line.isEmpty())
            continue;
        ArtEntry e;
        QString why;
        if (!parseArtEntry(line.split(QRegularExpression(QStringLiteral("\\s+"))), &e, &why)) {
            *error = QStringLiteral("%1:%2: %3").arg(path).arg(lineNo).arg(why);
            return false;
        }
        entries->append(e);
    }
    return true;
}
