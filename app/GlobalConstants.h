// Process-wide text constants: product and file names, settings key paths and
// value names, service paths, and the tables other modules index by number.
#pragma once

#include <QString>

// Product short name; also a settings value name and the folder of the
// unpacked preset library in the temporary folder.
inline constexpr char kProductName[] = "MELO";
// Executable file name as registered for start-with-the-system.
inline constexpr char kExeName[] = "MELO.exe";
// Updater started when the service names a newer version.
inline constexpr char kUpdaterName[] = "update.exe";
// Preset archive in the install folder, and its password.
inline constexpr char kPresetArchiveName[] = "qsh.dll";
inline constexpr char kPresetArchivePassword[] = "vmk|tor5168";

// Settings key paths in the form the native settings store accepts: hive
// first, single backslashes. The installer's key is addressed through the
// 32-bit registry view on purpose.
inline constexpr char kProductKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\MELO";
inline constexpr char kAutostartKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run\\MELO";

// Value names under the product key.
inline constexpr char kInstallLocation[] = "InstallLocation";
inline constexpr char kDisplayVersion[] = "DisplayVersion";
inline constexpr char kLastTimeVersion[] = "LastTimeVersion";
inline constexpr char kDownLoadPath[] = "downLoadPath";
inline constexpr char kDirectClose[] = "directClose";
inline constexpr char kChannel[] = "channel";

// Working sub-folder of the install folder for temporary images.
inline constexpr char kCacheFolder[] = "Cache";

// Service paths, appended to the HTTPS or HTTP base address.
inline constexpr char kClientInitPath[] = "/api/client/init";
inline constexpr char kHomePagePath[] = "/client/index.html?channel=";
inline constexpr char kGalleryPagePath[] = "/client/gallery.html?channel=";
inline constexpr char kSiteRootPath[] = "/";
inline constexpr char kPlansPagePath[] = "/web/combo/index";
inline constexpr char kBillsPagePath[] = "/web/member/index#/bills/3";

// Single-instance guard.
inline constexpr char kInstanceSemaphoreKey[] = "MELO主程序";
inline constexpr char kInstanceMemoryKey[] = "MELOEXE";

// Start-up.
inline constexpr char kAppFontFamily[] = "微软雅黑";
inline constexpr char kAppIconPath[] = ":/BrisaQT/Resources/MELO_128.ico";
inline constexpr char kMainWindowTitle[] = "MELO";
inline constexpr char kMatMetaTypeName[] = "cv::Mat";
// Windows unpack command; the two blanks before the target folder are kept.
inline constexpr char kUnpackCommandFormat[] = "\"%1\\WinRAR.exe\" x -ibck -y -p%2 \"%3\"  \"%4\"";
inline constexpr int kUnpackTimeoutMs = 30000;

// Avatar file written by the avatar download.
inline constexpr char kAvatarFileFormat[] = "%1%2";
inline constexpr char kAvatarFileSuffix[] = ".jpg";

// Scene categories: combo-box names and the shorter words recognised in a
// photograph's path, both indexed 0 to 5.
inline constexpr int kSceneCount = 6;
extern const char* const kSceneNames[kSceneCount];
extern const char* const kSceneWords[kSceneCount];

// Preset captions: top and mid groups (4 each) and down group (12) per scene.
extern const char* const kTopCaptions[kSceneCount][4];
extern const char* const kMidCaptions[kSceneCount][4];
extern const char* const kDownCaptions[kSceneCount][12];

// Crop ratio presets: index 0 is the free crop, 1 to 9 the locked ratios.
inline constexpr int kCropRatioCount = 10;
extern const char* const kCropRatioNames[kCropRatioCount];
// Width and height of the locked ratios (index 0 unused).
extern const int kCropRatioParts[kCropRatioCount][2];

// Service addresses. The defaults are fixed at build time; the environment
// variables MELO_SERVICE_HTTPS and MELO_SERVICE_HTTP override them so tests
// can point the program at a service on a port of their choosing.
QString serviceHttpsBase();
QString serviceHttpBase();
QString helpArticleUrl();
// The installed version as the installer records it (the project version).
QString buildVersion();
