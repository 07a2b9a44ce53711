// The one top-level window: a frameless frame with its own title bar, three
// stacked views under it (home page, cloud gallery, photo editor), the tray
// icon and the close behaviour chosen in the settings.
//
// The class is built in parts, one file each:
//   BrisaQT.cpp           construction order, window size, dragging, close,
//                         links and dialogs of the title bar
//   BrisaQT_ui.cpp        widget tree: central widget, title bar, the views
//   BrisaQT_titlebar.cpp  logo, navigation, window buttons, login, user frame
//   BrisaQT_editor.cpp    the editor container and its resize rule
//   BrisaQT_views.cpp     switching between the three views
//   BrisaQT_tray.cpp      tray icon, hiding to the tray, delayed close
//   BrisaQT_bridge.cpp    the embedded pages: channels, what the pages ask
//                         for, the downloads they start, scripts run in them
// The editor adds its own files with its members, slots and builder
// functions; see the sections below:
//   BrisaQT_edit.cpp      image view, tool strip, save bar, their layout
//   BrisaQT_document.cpp  opening a photograph, showing it, the compare
//   BrisaQT_gradingpanel.cpp  the grading panel and its connections
//   BrisaQT_grading.cpp   layer grading, strengths, resets, scene switch
//   BrisaQT_smart.cpp     the smart recommendation and its history
//   BrisaQT_crop.cpp      the crop tool
//   BrisaQT_save.cpp      saving at full resolution
//   BrisaQT_busy.cpp      opening and saving in the background: the busy
//                         banner, what is refused meanwhile, the results
//   BrisaQT_thread.cpp    the worker thread's wiring
#pragma once

#include "ImageDocument.h"
#include "SaveSetting.h"
#include "SmartDraw.h"

#include <QMainWindow>
#include <QPoint>
#include <QSystemTrayIcon>

#include <memory>

class BusyBanner;
class DocumentTasks;
class GradingPanel;
class MyDrawLabel;
class MyMousePressLabel;
class MyThread;
class PageBridge;
class QAction;
class QComboBox;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;
class QScrollArea;
class QSlider;
class QSpinBox;
class QThread;
class QTimer;
class QWebChannel;
class QWebEngineView;
class UserDialog;

class BrisaQT : public QMainWindow
{
    Q_OBJECT

public:
    explicit BrisaQT(QWidget* parent = nullptr);
    ~BrisaQT() override;

    // The open photograph and the images derived from it.
    const ImageDocument& document() const { return m_document; }

    // -- Editor operations ---------------------------------------------------
    // Shows a matrix in the image view by the fit rule; false when empty.
    bool showMat(const cv::Mat& mat);
    // Reads a file into the document (see ImageDocument) and shows it.
    bool loadImageFile(const char* path, bool full);
    // Grades with the checked presets: the preview, shown, or with `full`
    // the full-resolution image into the document's working result.
    void applyLayers(bool full);
    // Grades with the smart pick at one strength for every layer; draws a new
    // pick first unless `full` or `replay`.
    void applyRandom(bool full, bool replay, int strength);
    // The preset buttons' thumbnails and captions for the current scene.
    void refreshPresetThumbnails();
    // A photograph being read in the background (its preview may show; the
    // document is still the previous one), or a save being written.
    bool isOpening() const;
    bool isSaving() const;

signals:
    // After maximise and restore, once the new size is set: the image view
    // re-fits the photo to its new size.
    void imageViewRefitRequested();
    // Hands a layer to the worker thread (see startThreadSlot); nothing in
    // the program emits it.
    void sendThreadSlot(cv::Mat mat, char* szTempFile, int value, int num);
    // A background open: its quick preview is on the view; it has ended
    // (`opened` false: the previous photograph stays).
    void photographPreviewShown(const QString& path);
    void photographOpenEnded(const QString& path, bool opened);
    // A background save has ended and the user has been told.
    void saveEnded();

    // The web pages reach a part of these through PageBridge ("qtui"),
    // never the window itself.
public slots:
    // -- Window size and close (BrisaQT.cpp) ------------------------------
    void clickedMaxBtn();
    void clickedFullPageBtn();
    void clickedNormalBtn();
    void clickedDisFullPageBtn();
    void clickedCloseBtn();

    // -- Title-bar actions (BrisaQT.cpp) -----------------------------------
    void clickedSettingBtn();
    void clickedHelpBtn();
    void clickedHomePageBtn();
    void clickedShowAppBtn();
    void clickedShowAPPWebBtn();
    void clickedShowUserInfo();

    // -- View switching (BrisaQT_views.cpp) --------------------------------
    void clickedCloudBtn();
    void clickedRepairBtn();
    void clickedRefreshBtn();
    void clickedReturnCloudBtn();

    // -- Tray and delayed close (BrisaQT_tray.cpp) -------------------------
    void onMinSystemTray();
    void closeToWindows();
    void timerTimeoutToClose();
    void onActivated(QSystemTrayIcon::ActivationReason reason);

    // -- Embedded pages (BrisaQT_bridge.cpp) -------------------------------
    // Called by the pages through PageBridge, which has checked the arguments.
    void recieveJsMessage(QString jsUrls, QString jsNames);
    void recieveJsMessageOpenDirectory(QString jsUrl, QString jsName);
    void recieveJsMessageAdjustment(QString jsUrl, QString jsName);
    void recieveJsMessageUser(QString jsIconUrl, QString jsName, QString jsNum, QString jsUserID);
    void recieveJsToChangeWebView(QString page);
    void recieveJsToJumpUrl(QString url);
    void recieveJsToLogout(bool bLogout);
    void webClearCache();
    // Results of the downloads the pages start; account and folder buttons.
    void openDownLoadDirectory();
    void openLoadUserIcon(QString szTemp);
    void clickedOpenDownLoadBtn();
    void clickedLoginBtn();
    void onUserLogout();
    void toWebUpdateWebNote(bool bload);

    // -- Editor: the photograph (BrisaQT_document.cpp) ---------------------
    void clickedAddBtn();
    void openAdjustment(QString szTemp);
    void get_Thread_msg(cv::Mat cvmat);
    void clickedContrastBtn();

    // -- Editor: preset layers (BrisaQT_grading.cpp) -----------------------
    void on_changeButtonGroup(int id);
    void on_changeButtonMidGroup(int id);
    void on_changeButtonDownGroup(int id);
    void onRight_top_sliderValueChanged(int value);
    void onRight_top_spinValueChanged(int value);
    void onRight_top_mid_sliderValueChanged(int value);
    void onRight_top_mid_spinValueChanged(int value);
    void onRight_top_down_sliderValueChanged(int value);
    void onRight_top_down_spinValueChanged(int value);
    void resetTopImage();
    void resetMidImage();
    void resetDownImage();
    void resetImage();
    void comboBoxCurrentIndexChanged(int index);
    // Part of the window's interface without a task: they do nothing.
    void onRight_top_slidersValueChanged(QSlider* slider, int value);
    void onRight_top_spinsValueChanged(QSpinBox* spinBox, int value);
    void onsliderDblClickResetImage(QSlider* slider);
    void onRight_down_sliderValueChanged(int value);
    void onRight_down_spinValueChanged(int value);

    // -- Editor: smart recommendation (BrisaQT_smart.cpp) -------------------
    void resetRandImage();
    void on_randButtonEvent();
    void onRight_rand_sliderValueChanged(int value);
    void resetUpRandImage();
    void resetDownRandImage();

    // -- Editor: crop tool (BrisaQT_crop.cpp) -------------------------------
    void startCropImage();
    void cropComboBoxCurrentIndexChanged(int index);
    void returnShapeImage();
    void noShapeImage();
    void yesShapeImage();
    void screenMouseButtonDBClicke();
    void sizeCropRect();
    void cropRect();
    void resetCropImage();
    void clickedCropLineText();

    // -- Editor: saving (BrisaQT_save.cpp) -----------------------------------
    void clickedSaveBtn();
    void start_timer_event(setting& st);
    void timerTimeout();
    bool save_settingFile(setting& st);
    void saveTempFile(QString path);

    // -- Editor: worker thread (BrisaQT_thread.cpp) --------------------------
    void startThreadSlot();
    void closeThreadSlot();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // Drags of files over any of the window's widgets (BrisaQT_drop.cpp).
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;  // BrisaQT_tray.cpp

private:
    // -- Construction steps, called in order by the constructor ------------
    void buildUi();            // BrisaQT_ui.cpp
    void buildTray();          // BrisaQT_tray.cpp
    void setupPageChannels();  // BrisaQT_bridge.cpp
    void buildTitleBar();      // BrisaQT_titlebar.cpp
    void buildEditorPanel();   // BrisaQT_editor.cpp; ends with buildImageEditor
    void buildImageEditor();   // BrisaQT_edit.cpp
    void connectPageControls();  // BrisaQT_bridge.cpp, once the title bar exists

    // -- Helpers -----------------------------------------------------------
    void applyWindowSize(bool maximized);
    void layoutFrame();
    void layoutEditor();
    // Places the tool strips clear of a shown photo of that size (empty: none)
    // and the image view beside them where the photo leaves no room.
    void placeToolStrips(const QSize& photo);
    // Opens the settings dialog the one way every caller does; returns its
    // result.
    int runSettingDialog(int mode, int twoButtons);
    // Returns true once a download folder is stored, asking for one until
    // then: the editor and the downloads into it need it. False when the
    // application quits meanwhile.
    bool ensureDownloadFolder();
    // Puts the checked state of the two view buttons back to the last view
    // switch that was carried out (a click toggles them before the slot runs).
    void restoreViewButtons();

    // -- Window and views --------------------------------------------------
    QWidget* m_mainWidget = nullptr;
    QFrame* m_titleframe = nullptr;
    QWebEngineView* m_webEngineView = nullptr;   // cloud gallery
    QWidget* m_myWidget = nullptr;               // photo editor
    QWebEngineView* m_webEngineView2 = nullptr;  // home page

    // -- Title bar ---------------------------------------------------------
    QLabel* m_logoLabel = nullptr;
    QPushButton* m_repairBtn = nullptr;          // "开始修图"
    QPushButton* m_cloudBtn = nullptr;           // "云图库"
    QPushButton* m_settingBtn = nullptr;
    QPushButton* m_helpBtn = nullptr;
    QPushButton* m_showAppBtn = nullptr;
    QPushButton* m_openDownLoadBtn = nullptr;    // connected by the page bridge
    QPushButton* m_closeBtn = nullptr;
    QPushButton* m_normalBtn = nullptr;          // restore; object name "maxBtn"
    QPushButton* m_maxBtn = nullptr;             // maximise; object name "maxBtn"
    QPushButton* m_minBtn = nullptr;
    QPushButton* m_loginBtn = nullptr;           // connected by the page bridge
    QFrame* m_userFrame = nullptr;
    MyMousePressLabel* m_userFaceLabel = nullptr;
    MyMousePressLabel* m_userNameLabel = nullptr;
    QPushButton* m_userShowBtn = nullptr;
    UserDialog* m_userDlg = nullptr;             // userLogout() goes to the page bridge
    QPushButton* m_checkedViewBtn = nullptr;     // view button of the last switch

    // -- Editor container (the editor fills it) -----------------------------
    QWidget* m_imageArea = nullptr;              // its children fill it
    QPushButton* m_addImageBtn = nullptr;        // "添加图片"
    QWidget* m_rightPanel = nullptr;
    QScrollArea* m_rightContentFrame = nullptr;  // the grading panel scrolls in it
    QFrame* m_rightUpperStrip = nullptr;
    QFrame* m_rightLowerStrip = nullptr;

    // -- Embedded pages -------------------------------------------------------
    PageBridge* m_pageBridge = nullptr;          // "qtui" on both channels
    QWebChannel* m_galleryChannel = nullptr;
    QWebChannel* m_homeChannel = nullptr;

    // -- Image document --------------------------------------------------------
    ImageDocument m_document;

    // -- Editor: building and helpers ----------------------------------------
    void buildImageView();          // BrisaQT_edit.cpp
    void buildSaveBar();            // BrisaQT_edit.cpp
    void layoutEditorTools();       // BrisaQT_edit.cpp, part of layoutEditor
    bool openPhotograph(const QString& path);  // BrisaQT_busy.cpp: starts it
    void showOpenedPhotograph();               // BrisaQT_document.cpp
    void acceptPhotoDrops();        // BrisaQT_drop.cpp
    void openDroppedPhoto(const QString& path);
    void refitImageView();
    void leaveCompare();
    void buildGradingPanel();       // BrisaQT_gradingpanel.cpp
    void changeLayerGroup(PresetLayer layer);    // BrisaQT_grading.cpp
    void layerSliderChanged(PresetLayer layer, int value);
    void layerSpinChanged(PresetLayer layer, int value);
    void resetLayer(PresetLayer layer);
    bool showSmartStep(SmartDraw::Step step, const QString& endText);  // BrisaQT_smart.cpp
    void buildCropTools();          // BrisaQT_crop.cpp
    void showCroppedImage();
    SaveJob saveJobFor(const setting& st) const;  // BrisaQT_save.cpp
    void reportSave(const setting& st, const SaveResult& result);
    DocumentTasks* documentTasks();  // BrisaQT_busy.cpp
    void showBusy(const QString& text);
    void setEditingEnabled(bool enabled);
    void endBusy();
    // Each shows why and returns true when the request must wait: the
    // photograph cannot change while a save is written; a save waits for the
    // save under way and for a photograph still being read.
    bool photoChangeRefused();
    bool saveRefused();
    void onQuickPreview(const QString& path, const cv::Mat& shown);
    void onPhotoLoaded(const QString& path, const LoadedPhoto& loaded);
    void onPhotoLoadFailed(const QString& path, const QString& reason, PhotoReadError error);
    void onSaved(const setting& st, const SaveResult& result);
    void stopWorkerThread();        // BrisaQT_thread.cpp

    // -- Editor: widgets ---------------------------------------------------------
    MyDrawLabel* m_drawLabel = nullptr;          // the image view
    QFrame* m_toolStrip = nullptr;               // over the view's top left
    QPushButton* m_cropBtn = nullptr;
    QPushButton* m_cropResetBtn = nullptr;       // "撤销裁剪"
    QPushButton* m_contrastBtn = nullptr;        // the eye
    QFrame* m_cropStrip = nullptr;               // shown in crop mode
    QComboBox* m_cropComboBox = nullptr;
    QPushButton* m_returnShapeBtn = nullptr;
    QPushButton* m_noShapeBtn = nullptr;
    QPushButton* m_yesShapeBtn = nullptr;
    GradingPanel* m_gradingPanel = nullptr;
    QFrame* m_saveBar = nullptr;                 // bottom of the right panel
    QPushButton* m_returnCloudBtn = nullptr;
    QPushButton* m_saveBtn = nullptr;

    // -- Editor: state -----------------------------------------------------------
    SmartDraw m_smartDraw;                       // the pick and its history
    LayerGradeMemo m_previewGrades;              // layers of the last preview grade
    bool m_cropActive = false;
    setting m_saveSetting;                       // the last record received
    QTimer* m_saveTimer = nullptr;               // the save delay, one shot
    QThread* m_workerThread = nullptr;
    MyThread* m_worker = nullptr;
    DocumentTasks* m_tasks = nullptr;            // made on first use
    BusyBanner* m_busyBanner = nullptr;
    QString m_addBtnOpenPath;                    // an open the add button asked for
    bool m_quickPreviewShown = false;            // instead of the document

    // -- Tray and delayed close --------------------------------------------
    QSystemTrayIcon* m_trayIcon = nullptr;
    QMenu* m_trayMenu = nullptr;
    QAction* m_showAction = nullptr;
    QAction* m_quitAction = nullptr;
    std::unique_ptr<QTimer> m_closeTimer;

    // -- Title-bar dragging ------------------------------------------------
    bool m_dragging = false;
    QPoint m_pressPos;
};
