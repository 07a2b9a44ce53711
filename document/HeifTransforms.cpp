#include "HeifTransforms.h"

#include <QtEndian>

#include <opencv2/core.hpp>

#include <algorithm>

namespace {

struct Box {
    QByteArray type;
    qint64 body = 0;  // offset of the contents, after the header
    qint64 end = 0;
};

quint32 be32(const QByteArray& d, qint64 at)
{
    return at >= 0 && at + 4 <= d.size() ? qFromBigEndian<quint32>(d.constData() + at) : 0;
}

quint16 be16(const QByteArray& d, qint64 at)
{
    return at >= 0 && at + 2 <= d.size() ? qFromBigEndian<quint16>(d.constData() + at) : 0;
}

quint8 byteAt(const QByteArray& d, qint64 at)
{
    return at >= 0 && at < d.size() ? quint8(d.at(int(at))) : 0;
}

// The boxes in [from, to); false when one does not fit.
bool boxesIn(const QByteArray& d, qint64 from, qint64 to, std::vector<Box>& out)
{
    to = std::min<qint64>(to, d.size());
    while (from + 8 <= to) {
        quint64 size = be32(d, from);
        qint64 header = 8;
        if (size == 1) {
            if (from + 16 > to)
                return false;
            size = qFromBigEndian<quint64>(d.constData() + from + 8);
            header = 16;
        } else if (size == 0) {
            size = quint64(to - from);
        }
        if (size < quint64(header) || size > quint64(to - from))
            return false;
        out.push_back({d.mid(int(from) + 4, 4), from + header, from + qint64(size)});
        from += qint64(size);
    }
    return true;
}

const Box* find(const std::vector<Box>& boxes, const char* type)
{
    for (const Box& box : boxes) {
        if (box.type == type)
            return &box;
    }
    return nullptr;
}

// The 1-based property indices an "ipma" box associates with `itemId`.
std::vector<int> associations(const QByteArray& d, const Box& ipma, quint32 itemId)
{
    const int version = byteAt(d, ipma.body);
    const bool wide = byteAt(d, ipma.body + 3) & 1;
    const quint32 entries = be32(d, ipma.body + 4);
    qint64 at = ipma.body + 8;
    std::vector<int> found;
    for (quint32 e = 0; e < entries && at < ipma.end; ++e) {
        const quint32 item = version < 1 ? be16(d, at) : be32(d, at);
        at += version < 1 ? 2 : 4;
        const int count = byteAt(d, at++);
        for (int i = 0; i < count; ++i) {
            const int index = wide ? be16(d, at) & 0x7fff : byteAt(d, at) & 0x7f;
            at += wide ? 2 : 1;
            if (item == itemId && index > 0)
                found.push_back(index);
        }
    }
    return found;
}

} // namespace

std::optional<std::vector<HeifStep>> heifTransformations(const QByteArray& file, quint32 itemId)
{
    std::vector<Box> top, meta, iprp, properties;
    if (!boxesIn(file, 0, file.size(), top))
        return std::nullopt;
    const Box* metaBox = find(top, "meta");
    // "meta" is a full box: version and flags come first.
    if (!metaBox || !boxesIn(file, metaBox->body + 4, metaBox->end, meta))
        return std::nullopt;
    const Box* iprpBox = find(meta, "iprp");
    if (!iprpBox || !boxesIn(file, iprpBox->body, iprpBox->end, iprp))
        return std::nullopt;
    const Box* ipco = find(iprp, "ipco");
    if (!ipco || !boxesIn(file, ipco->body, ipco->end, properties))
        return std::nullopt;
    std::vector<HeifStep> steps;
    for (const Box& ipma : iprp) {
        if (ipma.type != "ipma")
            continue;
        for (const int index : associations(file, ipma, itemId)) {
            if (index > int(properties.size()))
                return std::nullopt;
            const Box& property = properties[size_t(index - 1)];
            if (property.type == "clap")
                return std::nullopt;
            if (property.type == "irot") {
                // Anticlockwise, in quarter turns.
                for (int turns = byteAt(file, property.body) & 3; turns > 0; --turns)
                    steps.push_back(HeifStep::TurnLeft);
            } else if (property.type == "imir") {
                // As phones and libheif write it: 0 exchanges top and
                // bottom, 1 left and right.
                steps.push_back(byteAt(file, property.body) & 1 ? HeifStep::FlipLeftRight : HeifStep::FlipTopBottom);
            }
        }
    }
    return steps;
}

bool heifStepsMirror(const std::vector<HeifStep>& steps)
{
    return std::any_of(steps.begin(), steps.end(), [](HeifStep step) { return step != HeifStep::TurnLeft; });
}

cv::Mat applyHeifSteps(const cv::Mat& stored, const std::vector<HeifStep>& steps)
{
    cv::Mat out = stored;
    for (const HeifStep step : steps) {
        cv::Mat next;
        switch (step) {
        case HeifStep::TurnLeft: cv::rotate(out, next, cv::ROTATE_90_COUNTERCLOCKWISE); break;
        case HeifStep::FlipLeftRight: cv::flip(out, next, 1); break;
        case HeifStep::FlipTopBottom: cv::flip(out, next, 0); break;
        }
        out = next;
    }
    return out;
}
