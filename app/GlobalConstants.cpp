#include "GlobalConstants.h"

#include "BuildConfig.h"

#include <QByteArray>

const char* const kSceneNames[kSceneCount] = {
    "自然景观", "纪实人文", "写真人像", "黑白影调", "航拍风光", "动物鸟类"};

const char* const kSceneWords[kSceneCount] = {
    "自然景观", "人文", "人像", "黑白影调", "风光", "动物鸟类"};

const char* const kTopCaptions[kSceneCount][4] = {
    {"增加曝光", "降低亮度", "增加对比", "降低反差"},
    {"增加曝光", "降低亮度", "高调淡彩", "低调淡彩"},
    {"增加曝光", "降低亮度", "高调淡彩", "低调淡彩"},
    {"增加曝光", "降低亮度", "灰调风格", "低调风格"},
    {"增加曝光", "降低亮度", "高调淡彩", "低调淡彩"},
    {"增加曝光", "降低亮度", "高调淡彩", "低调淡彩"},
};

const char* const kMidCaptions[kSceneCount][4] = {
    {"去除灰雾", "低调风格", "高调风格", "灰调风格"},
    {"增加对比", "降低反差", "暗部提亮", "高光降低"},
    {"增加对比", "降低反差", "暗部提亮", "高光降低"},
    {"增加对比", "降低反差", "暗部提亮", "高光降低"},
    {"增加对比", "降低反差", "暗部提亮", "高光降低"},
    {"增加对比", "降低反差", "暗部提亮", "高光降低"},
};

const char* const kDownCaptions[kSceneCount][12] = {
    {"鲜艳色彩", "降低饱和", "冷调风格", "暖调风格", "冷暖对比", "青橙风格",
     "增强红黄", "减少红黄", "增强蓝色", "减少蓝色", "加强绿色", "减少绿色"},
    {"雅黄风格", "鲜明风格", "电影风格", "浓郁风格", "墨兰风格", "蓝调风格",
     "墨青风格", "经典风格", "怀旧风格", "褪色风格", "胶片风格", "明丽风格"},
    {"经典胶片", "电影风格", "欧美风格", "怀旧风格", "麦色风格", "清新风格",
     "时尚风格", "复古风格", "潮牌色调", "梦幻色调", "创意色调", "艺术色调"},
    {"通透影调", "优化暗部", "优化高光", "棕灰影调", "经典褐色", "灰褐风格",
     "土黄色调", "灰青风格", "墨兰风格", "蓝调风景", "暗蓝色调", "怀旧风格"},
    {"蓝调风格", "青调风格", "暖红风格", "冷暖风格", "鲜艳色彩", "降低饱和",
     "增强蓝色", "减少蓝色", "增强绿色", "减少绿色", "增强红黄", "减少红黄"},
    {"蓝调风格", "青调风格", "暖调风格", "自然饱和", "鲜艳色彩", "降低饱和",
     "增强蓝色", "减少蓝色", "增强绿色", "减少绿色", "增强红黄", "减少红黄"},
};

const char* const kCropRatioNames[kCropRatioCount] = {
    "自由裁切", "1 : 1", "5 : 4", "7 : 5", "3 : 2", "16 : 9", "4 : 5", "5 : 7", "2 : 3", "9 : 16"};

const int kCropRatioParts[kCropRatioCount][2] = {
    {0, 0}, {1, 1}, {5, 4}, {7, 5}, {3, 2}, {16, 9}, {4, 5}, {5, 7}, {2, 3}, {9, 16}};

static QString fromEnvironment(const char* name, const char* fallback)
{
    const QByteArray value = qgetenv(name);
    return value.isEmpty() ? QString::fromUtf8(fallback) : QString::fromUtf8(value);
}

QString serviceHttpsBase() { return fromEnvironment("MELO_SERVICE_HTTPS", MELO_BUILD_SERVICE_HTTPS); }
QString serviceHttpBase() { return fromEnvironment("MELO_SERVICE_HTTP", MELO_BUILD_SERVICE_HTTP); }
QString helpArticleUrl() { return fromEnvironment("MELO_HELP_URL", MELO_BUILD_HELP_URL); }
QString buildVersion() { return QStringLiteral(MELO_BUILD_VERSION); }
