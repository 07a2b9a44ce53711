// Opening a photograph into the document and showing it: the add-image
// button's file dialog, opening a path (also handed over by the gallery),
// the fit of the view after a size change and the before/after compare.
#include "BrisaQT.h"

#include "CompareLook.h"
#include "GradingPanel.h"
#include "MyDrawLabel.h"
#include "PhotoFormats.h"
#include "ShowMat.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QFrame>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>

#include <cstdio>

void BrisaQT::clickedAddBtn()
{
    // The first entry is kept as the product has always shown it, and
    // selected; entries for every photograph the reader opens follow. Lines
    // separate them, since ";;" would swallow the first entry's own ";".
    const QStringList filters = QStringList{tr("Image files(*.bmp *.jpg *.tiff *.png *JEPG);")} + photoFileFilters();
    const QString path = QFileDialog::getOpenFileName(this, tr("打开文件"), QStringLiteral("./"),
                                                      filters.join(QLatin1Char('\n')));
    // A cancelled dialog counts as a failure; so does a file that cannot be
    // read, which leaves the button for another try. An opened photograph
    // hides the button.
    if (path.isEmpty() || !openPhotograph(path))
        QMessageBox::warning(this, tr("警告"), tr("打开图片失败!"), QMessageBox::Ok);
}

void BrisaQT::openAdjustment(QString szTemp)
{
    openPhotograph(szTemp);
}

bool BrisaQT::openPhotograph(const QString& path)
{
    // A RAW or HEIC photograph takes a moment to develop.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString reason;
    const bool opened = m_document.openAdjustment(path, &reason);
    QApplication::restoreOverrideCursor();
    if (!opened) {
        printf("open: %s cannot be read (%s), the picture stays\n", path.toLocal8Bit().constData(),
               reason.toLocal8Bit().constData());
        fflush(stdout);
        return false;
    }
    if (m_cropActive)
        noShapeImage();
    {
        // The scene comes from the path; it is no switch to confirm.
        const QSignalBlocker block(m_gradingPanel->sceneBox());
        m_gradingPanel->sceneBox()->setCurrentIndex(m_document.m_sceneIndex);
    }
    m_cropResetBtn->setEnabled(false);
    leaveCompare();
    m_drawLabel->setImage(m_document.forDisplay(m_document.m_showMat));
    resetImage();
    refreshPresetThumbnails();
    m_toolStrip->show();
    m_addImageBtn->hide();
    return true;
}

bool BrisaQT::loadImageFile(const char* path, bool full)
{
    if (!m_document.loadImageFile(path, full))
        return false;
    if (full)
        m_drawLabel->setImage(m_document.forDisplay(m_document.m_showMat));
    return showMat(m_document.m_dstMat);
}

bool BrisaQT::showMat(const cv::Mat& mat)
{
    placeToolStrips(QSize(mat.cols, mat.rows));
    // Shown in sRGB when the photograph's profile is another.
    return showMatOnLabel(m_drawLabel, m_document.forDisplay(mat));
}

void BrisaQT::get_Thread_msg(cv::Mat cvmat)
{
    m_document.m_dstMat = cvmat;
    showMat(cvmat);
}

void BrisaQT::refitImageView()
{
    m_drawLabel->setImage(m_document.forDisplay(m_document.m_showMat));
    showMat(m_document.m_dstMat);
}

void BrisaQT::clickedContrastBtn()
{
    applyCompareLook(m_contrastBtn, m_drawLabel->toggleOriginal());
}

void BrisaQT::leaveCompare()
{
    if (!m_drawLabel->isOriginalShown())
        return;
    m_drawLabel->setOriginalShown(false);
    applyCompareLook(m_contrastBtn, false);
}
