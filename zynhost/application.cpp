// SPDX-License-Identifier: MIT
#include "zynhost/application.h"

#include "zynplatform/console.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/registry.h"

#include <atomic>
#include <string>
#include <utility>

namespace {

std::atomic<CWinApp*> application{nullptr};
constinit thread_local const char* boxCaption = nullptr;

// The caption of a box for as long as it is shown; boxes may be shown from within one.
class BoxCaption {
public:
    explicit BoxCaption(const char* caption) : m_outer(std::exchange(boxCaption, caption)) {}
    ~BoxCaption() { boxCaption = m_outer; }
    BoxCaption(const BoxCaption&) = delete;
    BoxCaption& operator=(const BoxCaption&) = delete;

private:
    const char* m_outer;
};

// Without the extension; empty when the system does not tell.
std::string ExecutablePath() {
    std::string path;
    if (!zynplatform::GetExecutableFileName(path)) return {};
    const std::size_t dot = path.rfind('.');
    if (dot != path.npos && path.find('\\', dot) == path.npos) path.resize(dot);
    return path;
}

std::string ProfileKey(const char* section) {
    const std::string path = ExecutablePath();
    return "Software\\" + path.substr(path.rfind('\\') + 1) + "\\" + section;
}

} // namespace

CWinApp::CWinApp() {
    application = this;
}

CWinApp::~CWinApp() {
    CWinApp* self = this;
    application.compare_exchange_strong(self, nullptr);
}

int CWinApp::DoMessageBox(const char* text, std::uint32_t /*style*/, std::uint32_t /*helpContext*/) {
    zynplatform::ShowMessage(text, zynMessageBoxCaption());
    return IDOK;
}

std::uint32_t CWinApp::GetProfileInt(const char* section, const char* entry, int defaultValue) {
    const auto missing = static_cast<std::uint32_t>(defaultValue);
    const auto key = zynplatform::RegistryKey::Open(ProfileKey(section));
    return key ? key->GetNumber(entry).value_or(missing) : missing;
}

bool CWinApp::WriteProfileInt(const char* section, const char* entry, int value) {
    const auto key = zynplatform::RegistryKey::OpenOrCreate(ProfileKey(section));
    return key && key->SetNumber(entry, static_cast<std::uint32_t>(value));
}

CStringA CWinApp::GetHelpFilePath() const {
    return CStringA(std::string_view(ExecutablePath() + ".hlp"));
}

CWinApp* AfxGetApp() {
    return application;
}

int AfxMessageBox(const char* text, std::uint32_t style) {
    return AfxCaptionMessageBox(text, nullptr, style);
}

int AfxCaptionMessageBox(const char* text, const char* caption, std::uint32_t style) {
    const BoxCaption shown(caption);
    if (CWinApp* app = AfxGetApp()) return app->DoMessageBox(text ? text : "", style, 0);
    zynplatform::ShowMessage(text, caption);
    return IDOK;
}

const char* zynMessageBoxCaption() {
    return boxCaption;
}
