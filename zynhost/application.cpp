#include "zynhost/application.h"

#include "zynplatform/console.h"

#include <atomic>

namespace {

std::atomic<CWinApp*> application{nullptr};

} // namespace

CWinApp::CWinApp() {
    application = this;
}

CWinApp::~CWinApp() {
    CWinApp* self = this;
    application.compare_exchange_strong(self, nullptr);
}

int CWinApp::DoMessageBox(const char* text, std::uint32_t /*style*/, std::uint32_t /*helpContext*/) {
    zynplatform::ShowMessage(text, nullptr);
    return IDOK;
}

CWinApp* AfxGetApp() {
    return application;
}

int AfxMessageBox(const char* text, std::uint32_t style) {
    return AfxCaptionMessageBox(text, nullptr, style);
}

int AfxCaptionMessageBox(const char* text, const char* caption, std::uint32_t style) {
    if (CWinApp* app = AfxGetApp()) return app->DoMessageBox(text ? text : "", style, 0);
    zynplatform::ShowMessage(text, caption);
    return IDOK;
}
