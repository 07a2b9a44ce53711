#include "GradingTestSupport.h"

#include <cstdio>

QByteArray cubeText(int size, const std::function<LutRgb(float, float, float)>& colour, const QByteArray& header)
{
    QByteArray text = header;
    text += "LUT_3D_SIZE " + QByteArray::number(size) + "\n";
    char line[96];
    for (int b = 0; b < size; ++b)
        for (int g = 0; g < size; ++g)
            for (int r = 0; r < size; ++r) {
                const float step = 1.0f / float(size - 1);
                const LutRgb c = colour(r * step, g * step, b * step);
                snprintf(line, sizeof line, "%.7f %.7f %.7f\n", double(c.r), double(c.g), double(c.b));
                text += line;
            }
    return text;
}

cv::Mat everyColourImage()
{
    cv::Mat image(4096, 4096, CV_8UC3);
    uint8_t* p = image.data;
    for (int i = 0; i < 4096 * 4096; ++i, p += 3) {
        p[0] = uint8_t(i);
        p[1] = uint8_t(i >> 8);
        p[2] = uint8_t(i >> 16);
    }
    return image;
}
