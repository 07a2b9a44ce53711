// Switching between the home page, the cloud gallery and the editor. Leaving
// the editor asks first, since the open picture is not kept.
#include "BrisaQT.h"

#include "GlobalConstants.h"
#include "NoticeBox.h"
#include "QuitProbe.h"
#include "SettingsStore.h"

#include <QPushButton>
#include <QWebEngineView>

void BrisaQT::restoreViewButtons()
{
    m_checkedViewBtn->setChecked(true);
}

void BrisaQT::clickedCloudBtn()
{
    if (m_myWidget->isVisible() && !askNotice(QStringLiteral("返回云图库后，当前图片不会被保存！"))) {
        restoreViewButtons();
        return;
    }
    m_repairBtn->setChecked(false);
    m_cloudBtn->setChecked(true);
    m_checkedViewBtn = m_cloudBtn;
    m_webEngineView->show();
    m_webEngineView2->hide();
    m_myWidget->hide();
    m_addImageBtn->hide();
}

void BrisaQT::clickedRepairBtn()
{
    if (m_myWidget->isVisible() && !askNotice(QStringLiteral("返回首页后，当前图片不会被保存！"))) {
        restoreViewButtons();
        return;
    }
    m_repairBtn->setChecked(true);
    m_cloudBtn->setChecked(false);
    m_checkedViewBtn = m_repairBtn;
    m_webEngineView->hide();
    m_webEngineView->reload();
    m_webEngineView2->show();
    m_myWidget->hide();
    m_addImageBtn->hide();
}

void BrisaQT::clickedReturnCloudBtn()
{
    if (askNotice(QStringLiteral("返回后，当前页面将刷新！"))) {
        m_webEngineView->reload();
        m_webEngineView->show();
        m_webEngineView2->hide();
        m_myWidget->hide();
    }
    // Hidden whatever the answer.
    m_addImageBtn->hide();
}

bool BrisaQT::ensureDownloadFolder()
{
    while (readSettingValue(kProductKey, kDownLoadPath).isEmpty()) {
        if (applicationQuitting())
            return false;
        showNotice(QStringLiteral("请先设置下文件保存路径!"));
        runSettingDialog(2, 1);
    }
    return true;
}

void BrisaQT::clickedRefreshBtn()
{
    // The editor needs a folder for downloads and saved photos; there is no
    // way in until one is stored.
    if (!ensureDownloadFolder())
        return;
    m_webEngineView->hide();
    m_webEngineView2->hide();
    m_myWidget->show();
    m_addImageBtn->show();
}
