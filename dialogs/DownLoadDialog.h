// The small frameless dialog that downloads files handed over by the web
// pages, one at a time on the download pool, with a progress bar. The file
// is streamed into place; one that cannot be written is reported.
//
// Kinds: 0 the user's avatar (install folder), 1 a picture to keep (then its
// folder is shown), 2 a picture to open in the editor, 3 a batch of pictures
// whose URLs and names are joined with "|". Show it non-modally. Once closed
// with no transfer running it deletes itself; a transfer still running when
// the user closes it completes first.
#pragma once

#include "Easy_request.h"
#include "filedownload.h"

#include <QDialog>
#include <QPoint>
#include <QSharedPointer>
#include <QStringList>

class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;

class DownLoadDialog : public QDialog
{
    Q_OBJECT
public:
    enum Kind { UserIcon = 0, KeepPicture = 1, AdjustPicture = 2, Batch = 3 };

    DownLoadDialog(QWidget* parent, const QString& url, const QString& name, int kind);

signals:
    void onLoadUserIcon(QString szTemp);
    void onOpenDirectory();
    void onAdjustment(QString szTemp);

public slots:
    void ondownloadprogress(filedownload* fd, float percent);
    void ondownloadfinish(Easy_request* net, bool s);
    bool CloseWindow();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    struct Form {
        QFrame* frame = nullptr;
        QPushButton* closeBtn = nullptr;
    };

    void setupForm();
    void startDownload(const QString& url);
    void startNextOfBatch();
    void showFailure();
    void showWriteFailure();
    void finishAdjustment(bool written);

    Form ui;
    bool m_drag = false;
    QPoint m_pressPos;
    bool m_downloading = false;
    QLabel* m_titleLabel = nullptr;
    QLabel* m_progressLabel = nullptr;
    QProgressBar* m_progressBar = nullptr;
    QString m_savePath;
    int m_kind = 0;
    QSharedPointer<Network::net_request> m_request;
    QSharedPointer<filedownload> m_download;
    QStringList m_urls;
    QStringList m_names;
};
