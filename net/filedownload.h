// A request for a file download: long overall time-out, TCP keep-alive and a
// progress signal with the downloaded fraction (0 to 1).
#pragma once

#include "Easy_request.h"

class filedownload : public Easy_request
{
    Q_OBJECT
public:
    explicit filedownload(QObject* parent = nullptr);

    bool set_options() override;

signals:
    void slot_progress(filedownload* download, float fraction);

private:
    static int progress_trampoline(void* object, curl_off_t dltotal, curl_off_t dlnow,
                                   curl_off_t ultotal, curl_off_t ulnow);
    int progress_function(curl_off_t dltotal, curl_off_t dlnow);
};

Q_DECLARE_METATYPE(filedownload*)
