// Plain rules of the conversation with the embedded pages: their addresses,
// what page-supplied arguments may be, and the texts run in the pages.
#pragma once

#include <QString>
#include <QStringList>

#include <initializer_list>

class QUrl;

namespace PageInterface {

// Longest text a page may pass in one argument; far above any real address,
// name or list of them.
inline constexpr int kMaxArgumentLength = 65536;

// A page's address: the service base, the page path and the channel, the
// channel appended as it is ("%1%2").
QString pageAddress(const QString& serviceBase, const char* pagePath, const QString& channel);

// The user id a page reports, read in base 10; anything that is not a whole
// 32-bit number gives 0.
int userIdFromPage(const QString& text);

// True for an absolute http or https address with a host.
bool isWebAddress(const QString& text);

// What a view does with a navigation its page starts.
enum class Navigation {
    Load,           // one of the service's own pages: loaded in the view
    OpenInBrowser,  // a web address elsewhere: handed to the system browser
    Refuse,         // anything else: neither loaded nor opened
};

// The views show only the service's pages, the only ones that get the bridge.
// An address belongs to the service when its scheme, host and port equal
// those of one of `serviceBases`. Elsewhere, a main-frame navigation to an
// http or https address goes to the system browser; frames inside a page,
// other schemes and frames of other origins are refused ("about:" frames,
// which have their parent's origin, load).
Navigation navigationFor(const QUrl& url, bool isMainFrame, const QStringList& serviceBases);

// Why the page's arguments are refused, or an empty text when they are fine:
// every argument must stay below kMaxArgumentLength.
QString lengthRefusal(std::initializer_list<QString> arguments);

// Why a download the page asks for is refused: `reason` for the log, `notice`
// for the user (quoting the offending address or name); both empty when the
// download may go on.
struct Refusal {
    QString reason;
    QString notice;
    bool refused() const { return !reason.isEmpty(); }
};

// `urls` and `names` may be lists joined with "|". Each address must be empty
// (passed on as it is, the download then fails visibly) or a web address, so
// a page cannot have a local file copied; each name must be a plain file
// name, so nothing is written outside the download folder.
Refusal downloadRefusal(const QString& urls, const QString& names);

// The release-notes script; the values go in as they are.
QString updateNoteScript(const QString& displayVersion, const QString& lastVersion);

// The user id the logged-in page reported last (0 until then). Process-wide;
// nothing in the application reads it besides tests.
int currentUserId();
void setCurrentUserId(int id);

} // namespace PageInterface
