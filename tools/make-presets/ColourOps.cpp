#include "ColourOps.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

namespace {

double clamp01(double v) { return std::min(1.0, std::max(0.0, v)); }

Rgb clamped(const Rgb& c) { return {clamp01(c[0]), clamp01(c[1]), clamp01(c[2])}; }

double toLinear(double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); }

double toDisplay(double v)
{
    v = clamp01(v);
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
}

double smoothstep(double edge0, double edge1, double x)
{
    const double t = clamp01((x - edge0) / (edge1 - edge0));
    return t * t * (3 - 2 * t);
}

// Moves a colour towards the grey of luma l until it fits into 0..1, so
// chroma changes never shift lightness or hue.
Rgb fitGamut(const Rgb& c, double l)
{
    l = clamp01(l);
    double scale = 1.0;
    for (double v : c) {
        if (v > 1.0 && v - l > 1e-12)
            scale = std::min(scale, (1.0 - l) / (v - l));
        if (v < 0.0 && l - v > 1e-12)
            scale = std::min(scale, l / (l - v));
    }
    return clamped({l + (c[0] - l) * scale, l + (c[1] - l) * scale, l + (c[2] - l) * scale});
}

Rgb withChroma(const Rgb& c, double factor)
{
    const double l = luma(c);
    return fitGamut({l + (c[0] - l) * factor, l + (c[1] - l) * factor, l + (c[2] - l) * factor}, l);
}

// The fully saturated colour of a hue, minus its luma: a direction that
// colours a pixel without changing its lightness.
Rgb hueDirection(double hueDegrees)
{
    const double h = std::fmod(std::fmod(hueDegrees, 360.0) + 360.0, 360.0) / 60.0;
    const double x = 1.0 - std::fabs(std::fmod(h, 2.0) - 1.0);
    Rgb c;
    switch (int(h)) {
    case 0: c = {1, x, 0}; break;
    case 1: c = {x, 1, 0}; break;
    case 2: c = {0, 1, x}; break;
    case 3: c = {0, x, 1}; break;
    case 4: c = {x, 0, 1}; break;
    default: c = {1, 0, x}; break;
    }
    const double l = luma(c);
    return {c[0] - l, c[1] - l, c[2] - l};
}

double hueOf(const Rgb& c)
{
    const double maxV = std::max({c[0], c[1], c[2]});
    const double minV = std::min({c[0], c[1], c[2]});
    const double d = maxV - minV;
    if (d <= 0)
        return 0;
    double h;
    if (maxV == c[0])
        h = std::fmod((c[1] - c[2]) / d, 6.0);
    else if (maxV == c[1])
        h = (c[2] - c[0]) / d + 2;
    else
        h = (c[0] - c[1]) / d + 4;
    return std::fmod(h * 60.0 + 360.0, 360.0);
}

// Monotone cubic interpolation through the points (Fritsch-Carlson).
class ToneCurve {
public:
    explicit ToneCurve(std::vector<std::pair<double, double>> points) : m_p(std::move(points))
    {
        const size_t n = m_p.size();
        std::vector<double> slope(n - 1);
        for (size_t i = 0; i + 1 < n; ++i)
            slope[i] = (m_p[i + 1].second - m_p[i].second) / (m_p[i + 1].first - m_p[i].first);
        m_tangent.assign(n, 0.0);
        m_tangent[0] = slope[0];
        m_tangent[n - 1] = slope[n - 2];
        for (size_t i = 1; i + 1 < n; ++i)
            m_tangent[i] = slope[i - 1] * slope[i] <= 0 ? 0.0 : (slope[i - 1] + slope[i]) / 2;
        for (size_t i = 0; i + 1 < n; ++i) {
            if (slope[i] == 0) {
                m_tangent[i] = m_tangent[i + 1] = 0;
                continue;
            }
            const double a = m_tangent[i] / slope[i], b = m_tangent[i + 1] / slope[i];
            const double h = a * a + b * b;
            if (h > 9) {
                m_tangent[i] = 3 / std::sqrt(h) * a * slope[i];
                m_tangent[i + 1] = 3 / std::sqrt(h) * b * slope[i];
            }
        }
    }

    double operator()(double x) const
    {
        if (x <= m_p.front().first)
            return m_p.front().second;
        if (x >= m_p.back().first)
            return m_p.back().second;
        size_t i = 0;
        while (x > m_p[i + 1].first)
            ++i;
        const double h = m_p[i + 1].first - m_p[i].first;
        const double t = (x - m_p[i].first) / h;
        const double t2 = t * t, t3 = t2 * t;
        return (2 * t3 - 3 * t2 + 1) * m_p[i].second + (t3 - 2 * t2 + t) * h * m_tangent[i] +
               (-2 * t3 + 3 * t2) * m_p[i + 1].second + (t3 - t2) * h * m_tangent[i + 1];
    }

private:
    std::vector<std::pair<double, double>> m_p;
    std::vector<double> m_tangent;
};

bool parseNumber(const std::string& text, double& value)
{
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end && *end == '\0';
}

bool parseCurve(const std::vector<std::string>& args, std::vector<std::pair<double, double>>& points)
{
    for (const std::string& arg : args) {
        const size_t colon = arg.find(':');
        double x, y;
        if (colon == std::string::npos || !parseNumber(arg.substr(0, colon), x) ||
            !parseNumber(arg.substr(colon + 1), y))
            return false;
        if (!points.empty() && x <= points.back().first)
            return false;
        points.emplace_back(x, y);
    }
    return points.size() >= 2;
}

using Numbers = std::vector<double>;

ColourOp exposure(const Numbers& a)
{
    const double gain = std::pow(2.0, a[0]);
    const double knee = 0.7;
    return [=](const Rgb& c) {
        Rgb out;
        for (int i = 0; i < 3; ++i) {
            double v = toLinear(c[i]) * gain;
            if (v > knee)
                v = knee + (1 - knee) * std::tanh((v - knee) / (1 - knee));
            out[i] = toDisplay(v);
        }
        return out;
    };
}

ColourOp gammaOp(const Numbers& a)
{
    const double g = a[0];
    return [=](const Rgb& c) { return Rgb{std::pow(c[0], g), std::pow(c[1], g), std::pow(c[2], g)}; };
}

ColourOp contrast(const Numbers& a)
{
    const double k = a[0];
    if (k >= 0) {
        return [=](const Rgb& c) {
            Rgb out;
            for (int i = 0; i < 3; ++i) {
                const double x = c[i];
                const double s = x < 0.5 ? 2 * x * x : 1 - 2 * (1 - x) * (1 - x);
                out[i] = (1 - k) * x + k * s;
            }
            return out;
        };
    }
    const double lift = -0.25 * k;
    return [=](const Rgb& c) {
        return Rgb{lift + (1 - 2 * lift) * c[0], lift + (1 - 2 * lift) * c[1], lift + (1 - 2 * lift) * c[2]};
    };
}

ColourOp levels(const Numbers& a)
{
    const double black = a[0], white = a[1];
    return [=](const Rgb& c) {
        return clamped({(c[0] - black) / (white - black), (c[1] - black) / (white - black),
                        (c[2] - black) / (white - black)});
    };
}

ColourOp fade(const Numbers& a)
{
    const double lift = a[0], range = 1 - 1.5 * a[0];
    return [=](const Rgb& c) { return Rgb{lift + range * c[0], lift + range * c[1], lift + range * c[2]}; };
}

ColourOp saturation(const Numbers& a)
{
    const double s = a[0];
    return [=](const Rgb& c) { return withChroma(c, s); };
}

ColourOp vibrance(const Numbers& a)
{
    const double v = a[0];
    return [=](const Rgb& c) {
        const double chroma = std::max({c[0], c[1], c[2]}) - std::min({c[0], c[1], c[2]});
        return withChroma(c, 1 + v * (1 - chroma));
    };
}

Rgb linearGains(const Rgb& c, const Rgb& gains)
{
    const double norm = luma(gains);
    Rgb out;
    for (int i = 0; i < 3; ++i)
        out[i] = toDisplay(toLinear(c[i]) * gains[i] / norm);
    return out;
}

ColourOp temperature(const Numbers& a)
{
    const Rgb gains = {std::pow(2.0, 0.4 * a[0]), 1.0, std::pow(2.0, -0.5 * a[0])};
    return [=](const Rgb& c) { return linearGains(c, gains); };
}

ColourOp tint(const Numbers& a)
{
    const Rgb gains = {1.0, std::pow(2.0, -0.35 * a[0]), 1.0};
    return [=](const Rgb& c) { return linearGains(c, gains); };
}

ColourOp split(const Numbers& a)
{
    const Rgb shadow = hueDirection(a[0]), highlight = hueDirection(a[2]);
    // Half strength per unit keeps the recipe numbers in a comfortable range.
    const double shadowAmount = 0.5 * a[1], highlightAmount = 0.5 * a[3];
    return [=](const Rgb& c) {
        const double l = luma(c);
        const double ws = (1 - l) * (1 - l) * smoothstep(0.0, 0.2, l) * shadowAmount;
        const double wh = l * l * smoothstep(0.0, 0.2, 1 - l) * highlightAmount;
        Rgb out;
        for (int i = 0; i < 3; ++i)
            out[i] = c[i] + ws * shadow[i] + wh * highlight[i];
        return fitGamut(out, l);
    };
}

ColourOp hueSat(const Numbers& a)
{
    const double hue = a[0], width = a[1], factor = a[2], lift = a[3];
    return [=](const Rgb& c) {
        const double chroma = std::max({c[0], c[1], c[2]}) - std::min({c[0], c[1], c[2]});
        double distance = std::fabs(hueOf(c) - hue);
        distance = std::min(distance, 360 - distance);
        const double w = smoothstep(width, 0.0, distance) * smoothstep(0.0, 0.25, chroma);
        Rgb out = withChroma(c, 1 + (factor - 1) * w);
        for (double& v : out)
            v += lift * w;
        return fitGamut(out, luma(out));
    };
}

ColourOp mix(const Numbers& m)
{
    return [=](const Rgb& c) {
        Rgb out;
        for (int i = 0; i < 3; ++i)
            out[i] = m[3 * i] * c[0] + m[3 * i + 1] * c[1] + m[3 * i + 2] * c[2];
        return clamped(out);
    };
}

ColourOp mono(const Numbers& w)
{
    const double sum = w[0] + w[1] + w[2];
    return [=](const Rgb& c) {
        const double l = clamp01((w[0] * c[0] + w[1] * c[1] + w[2] * c[2]) / sum);
        return Rgb{l, l, l};
    };
}

ColourOp tone(const Numbers& a)
{
    const Rgb direction = hueDirection(a[0]);
    const double amount = a[1];
    return [=](const Rgb& c) {
        const double l = luma(c);
        const double w = 4 * l * (1 - l) * amount;
        return fitGamut({l + w * direction[0], l + w * direction[1], l + w * direction[2]}, l);
    };
}

ColourOp curveOn(std::vector<std::pair<double, double>> points, int channel)
{
    const ToneCurve curve(std::move(points));
    return [=](const Rgb& c) {
        Rgb out = c;
        for (int i = 0; i < 3; ++i)
            if (channel < 0 || channel == i)
                out[i] = clamp01(curve(c[i]));
        return out;
    };
}

ColourOp lumaCurve(std::vector<std::pair<double, double>> points)
{
    const ToneCurve curve(std::move(points));
    return [=](const Rgb& c) {
        const double l = luma(c);
        const double target = clamp01(curve(l));
        if (l <= 1e-6)
            return Rgb{target, target, target};
        const double ratio = target / l;
        return fitGamut({c[0] * ratio, c[1] * ratio, c[2] * ratio}, target);
    };
}

struct NumericOp {
    size_t arity;
    ColourOp (*make)(const Numbers&);
};

const std::map<std::string, NumericOp>& numericOps()
{
    static const std::map<std::string, NumericOp> ops = {
        {"exposure", {1, exposure}},     {"gamma", {1, gammaOp}},       {"contrast", {1, contrast}},
        {"levels", {2, levels}},         {"fade", {1, fade}},           {"saturation", {1, saturation}},
        {"vibrance", {1, vibrance}},     {"temperature", {1, temperature}}, {"tint", {1, tint}},
        {"split", {4, split}},           {"huesat", {4, hueSat}},       {"mix", {9, mix}},
        {"mono", {3, mono}},             {"tone", {2, tone}},
    };
    return ops;
}

}  // namespace

double luma(const Rgb& c) { return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]; }

ColourOp makeColourOp(const std::string& name, const std::vector<std::string>& args, std::string& error)
{
    const int channel = name == "curve.r" ? 0 : name == "curve.g" ? 1 : name == "curve.b" ? 2 : -1;
    if (name == "curve" || name == "lcurve" || channel >= 0) {
        std::vector<std::pair<double, double>> points;
        if (!parseCurve(args, points)) {
            error = name + " needs two or more X:Y points with rising X";
            return {};
        }
        return name == "lcurve" ? lumaCurve(std::move(points)) : curveOn(std::move(points), channel);
    }
    const auto found = numericOps().find(name);
    if (found == numericOps().end()) {
        error = "unknown operation " + name;
        return {};
    }
    Numbers numbers(args.size());
    for (size_t i = 0; i < args.size(); ++i) {
        if (!parseNumber(args[i], numbers[i])) {
            error = name + ": " + args[i] + " is not a number";
            return {};
        }
    }
    if (numbers.size() != found->second.arity) {
        error = name + " takes " + std::to_string(found->second.arity) + " numbers";
        return {};
    }
    const ColourOp op = found->second.make(numbers);
    return [op](const Rgb& c) { return clamped(op(c)); };
}
