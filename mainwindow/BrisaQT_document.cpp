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


void BrisaQT::clickedAddBtn()
{
    if (photoChangeRefused())
        return;
    // The first entry is kept as the product has always shown it, and
    // selected; entries for every photograph the reader opens follow. Lines
    // separate them, since ";;" would swallow the first entry's own ";".
    const QStringList filters = QStringList{tr("Image files(*.bmp *.jpg *.tiff *.png *JEPG);")} + photoFileFilters();
    const QString path = QFileDialog::getOpenFileName(this, tr("打开文件"), QStringLiteral("./"),
                                                      filters.join(QLatin1Char('\n')));
    // A cancelled dialog counts as a failure; so does a file that cannot be
    // read (told once it has been tried), which leaves the button for another
    // try. An opened photograph hides the button.
    if (path.isEmpty()) {
        QMessageBox::warning(this, tr("警告"), tr("打开图片失败!"), QMessageBox::Ok);
        return;
    }
    m_addBtnOpenPath = path;
    openPhotograph(path);
}

void BrisaQT::openAdjustment(QString szTemp)
{
    m_addBtnOpenPath.clear();
    openPhotograph(szTemp);
}

// The document has taken over a photograph: the editor follows.
void BrisaQT::showOpenedPhotograph()
{
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
