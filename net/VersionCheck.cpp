#include "VersionCheck.h"

#include "Easy_request.h"
#include "GlobalConstants.h"
#include "NoticeBox.h"
#include "SettingsStore.h"

#include <json/json.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int kSuccessCode = 200;
// Far above any real answer. A longer one is not understood (the program
// starts normally) and is neither kept nor printed whole.
constexpr size_t kMaxAnswerBytes = 1 << 20;

// The body as text up to its first NUL byte.
std::string bodyText(const std::vector<char>& body)
{
    if (body.empty())
        return std::string();
    const void* nul = std::memchr(body.data(), '\0', body.size());
    const size_t length = nul ? static_cast<size_t>(static_cast<const char*>(nul) - body.data()) : body.size();
    return std::string(body.data(), length);
}

[[noreturn]] void quitRefused()
{
    showNotice(QStringLiteral("请检查网络情况，再次启动程序!"), QStringLiteral("失败"));
    // End at once: the start-up routine's objects are deliberately left alone.
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(0);
}

enum class Answer { NotUnderstood, SameVersion, OtherVersion };

// Reads the service's answer. A refusal ends the process.
Answer readAnswer(const std::string& text)
{
    Json::Reader reader;
    Json::Value parsed;
    if (!reader.parse(text, parsed))
        return Answer::NotUnderstood;
    // Read-only access: missing members read as null, never get created.
    const Json::Value& root = parsed;
    const int code = root["code"].asInt();
    std::printf("code:%d", code);
    std::fflush(stdout);
    if (code != kSuccessCode)
        quitRefused();

    const std::string serverVersion = root["data"]["version"]["newversion"].asString();
    const QByteArray installed =
        readSettingValue(QString::fromUtf8(kProductKey), QString::fromUtf8(kDisplayVersion)).toLocal8Bit();
    // Exact text comparison: any difference, an older release too, updates.
    return serverVersion == installed.toStdString() ? Answer::SameVersion : Answer::OtherVersion;
}

} // namespace

bool checkClientVersion()
{
    Network::net_request req;
    req.url = (serviceHttpsBase() + QString::fromUtf8(kClientInitPath)).toLocal8Bit().toStdString();
    Easy_request request;
    request.setBodyLimit(kMaxAnswerBytes);
    if (!request.request(&req))
        return false;

    const std::string text = bodyText(request.buffer());
    std::printf("context:%s", text.c_str());
    std::fflush(stdout);

    Answer answer = Answer::NotUnderstood;
    try {
        answer = readAnswer(text);
    } catch (const Json::Exception& e) {
        // Also covers members of an unexpected type (a text "code", a "data"
        // that is not an object): the answer is not understood, start normally.
        std::printf("json paser error%s", e.what());
        std::fflush(stdout);
        return false;
    }
    if (answer != Answer::OtherVersion)
        return false;
    showNotice(QStringLiteral("你当前版本已经过久，马上要进行更新版本！"), QStringLiteral("更新"));
    return true;
}
