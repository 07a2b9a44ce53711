#include "TiffStructure.h"

#include <QtEndian>

namespace {

template <typename T>
void append(QByteArray& out, T value)
{
    char raw[sizeof(T)];
    qToLittleEndian(value, raw);
    out.append(raw, sizeof(T));
}

template <typename T>
void put(QByteArray& out, int at, T value)
{
    qToLittleEndian(value, out.data() + at);
}

} // namespace

void TiffDirectory::add(quint16 tag, Entry entry)
{
    m_entries[tag] = std::move(entry);
}

void TiffDirectory::bytes(quint16 tag, const std::vector<quint8>& values)
{
    Entry e{Byte, quint32(values.size()), QByteArray(reinterpret_cast<const char*>(values.data()), int(values.size())), {}, {}, false};
    add(tag, std::move(e));
}

void TiffDirectory::ascii(quint16 tag, const QByteArray& text)
{
    QByteArray value = text;
    value.append('\0');
    add(tag, Entry{Ascii, quint32(value.size()), value, {}, {}, false});
}

void TiffDirectory::shorts(quint16 tag, const std::vector<quint16>& values)
{
    Entry e{Short, quint32(values.size()), {}, {}, {}, false};
    for (quint16 v : values)
        append(e.value, v);
    add(tag, std::move(e));
}

void TiffDirectory::longs(quint16 tag, const std::vector<quint32>& values)
{
    Entry e{Long, quint32(values.size()), {}, {}, {}, false};
    for (quint32 v : values)
        append(e.value, v);
    add(tag, std::move(e));
}

template <typename Pairs>
TiffDirectory::Entry TiffDirectory::fractions(quint16 type, const Pairs& values)
{
    Entry e{type, quint32(values.size()), {}, {}, {}, false};
    for (const auto& [num, den] : values) {
        append(e.value, num);
        append(e.value, den);
    }
    return e;
}

void TiffDirectory::rationals(quint16 tag, const std::vector<std::pair<quint32, quint32>>& values)
{
    add(tag, fractions(Rational, values));
}

void TiffDirectory::srationals(quint16 tag, const std::vector<std::pair<qint32, qint32>>& values)
{
    add(tag, fractions(SRational, values));
}

void TiffDirectory::subDirectory(quint16 tag, const TiffDirectory& directory)
{
    add(tag, Entry{Long, 1, {}, std::make_shared<TiffDirectory>(directory), {}, false});
}

void TiffDirectory::dataOffset(quint16 tag, const QByteArray& data)
{
    add(tag, Entry{Long, 1, {}, {}, data, true});
}

void TiffDirectory::writeTo(QByteArray& out) const
{
    if (out.size() % 2)
        out.append('\0');  // directories start on a word boundary
    const int start = out.size();
    append(out, quint16(m_entries.size()));
    out.append(QByteArray(int(m_entries.size()) * 12 + 4, '\0'));  // entries, next offset 0
    int slot = start + 2;
    for (const auto& [tag, e] : m_entries) {
        put(out, slot, tag);
        put(out, slot + 2, e.type);
        put(out, slot + 4, e.count);
        if (e.directory || e.isData) {
            if (out.size() % 2)
                out.append('\0');
            put(out, slot + 8, quint32(out.size()));
            if (e.directory)
                e.directory->writeTo(out);
            else
                out.append(e.data);
        } else if (e.value.size() <= 4) {
            out.replace(slot + 8, e.value.size(), e.value);
        } else {
            if (out.size() % 2)
                out.append('\0');
            put(out, slot + 8, quint32(out.size()));
            out.append(e.value);
        }
        slot += 12;
    }
}

QByteArray tiffFile(const TiffDirectory& first)
{
    QByteArray out("II*\0", 4);
    append(out, quint32(8));
    first.writeTo(out);
    return out;
}
