// Window-free rules of the download dialog: splitting a batch and where a
// file goes.
#pragma once

#include <QString>
#include <QStringList>


// The URLs and file names of a batch, pairwise and in order.
struct DownloadBatch {
    QStringList urls;
    QStringList names;
};

// Splits the "|"-joined texts of a batch. The text after the last "|" is an
// entry only when not empty; when the names run out of separators, the
// remaining name text is used whole for every further entry.
DownloadBatch splitDownloadBatch(const QString& urls, const QString& names);

// The last plain component of a file name handed over by a page, so a name
// with a path separator or ".." can never leave its folder. Empty when the
// name has no plain component.
QString plainFileName(const QString& name);

// "%1//%2" of the folder and the plain file name; empty when the name is refused.
QString downloadTargetPath(const QString& folder, const QString& name);

// The folder of the avatar: the per-user cache folder, created when missing.
QString avatarFolder();
