#include "Pass.h"

#include "Failure.h"
#include "Session.h"
#include "common/FormatText.h"

#include <algorithm>
#include <string_view>

namespace {

struct Source
{
    const wchar_t* name;
    const char* jsonName;
    std::optional<long long> LoggedPass::*time;
    std::string_view begin; // what the log has of it first
};

constexpr Source kSources[] = {
    {L"what is installed", "WhatIsInstalled", &LoggedPass::marking, "RefreshThread Refresh app name list!"},
    {L"Store packages", "Store", &LoggedPass::store, "CQanhPackageManager::RefreshMetroApps IN"},
    {L"Start menu", "StartMenu", &LoggedPass::startMenu, "CQanhPackageManager::RefreshDesktopApps("},
    {L"saving", "Saving", &LoggedPass::save, "CQanhAppNameList::Save("},
};

UniqueFile OpenShared(const std::wstring& path)
{
    return UniqueFile(CreateFileW(path.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The last line of the log as it is; 0: there is none.
std::size_t LinesOf(const std::wstring& path)
{
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return 0;
    }
    LogLines lines(path, GetACP());
    LogMessage message;
    while (lines.Next(message)) {
    }
    return message.line;
}

} // namespace

PassLog::PassLog() : m_path(OwnFile(L"QanHelperLog.txt")), m_linesBefore(LinesOf(m_path))
{
    LARGE_INTEGER size{};
    const UniqueFile file = OpenShared(m_path);
    if (file && GetFileSizeEx(file.Get(), &size)) {
        m_offset = size.QuadPart;
    }
}

std::wstring PassLog::Step()
{
    const UniqueFile file = OpenShared(m_path);
    LARGE_INTEGER place{};
    place.QuadPart = m_offset;
    if (!file || !SetFilePointerEx(file.Get(), place, nullptr, FILE_BEGIN)) {
        return m_step;
    }
    char piece[65536];
    DWORD read = 0;
    while (ReadFile(file.Get(), piece, sizeof piece, &read, nullptr) && read > 0) {
        // A line that is cut here is missed; the next one of its source is not.
        const std::string_view text(piece, read);
        m_offset += read;
        std::size_t last = 0;
        for (const Source& source : kSources) {
            const std::size_t at = text.rfind(source.begin);
            if (at != std::string_view::npos && at >= last) {
                last = at;
                m_step = source.name;
            }
        }
    }
    return m_step;
}

const LoggedPass* PassLog::Find()
{
    if (GetFileAttributesW(m_path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return nullptr;
    }
    LogLines lines(m_path, GetACP());
    LogMessage message;
    while (message.line < m_linesBefore && lines.Next(message)) {
    }
    (void)ReadCalls(lines, m_summary);
    if (m_summary.passes.empty()) {
        return nullptr;
    }
    const LoggedPass& pass = m_summary.passes.front();
    // What the start did without, as it does for want of a catalogue, is nothing of the pass.
    m_summary.failures.erase(
        std::remove_if(m_summary.failures.begin(), m_summary.failures.end(),
                       [&pass](const LoggedFailure& failure) { return failure.line < pass.line; }),
        m_summary.failures.end());
    return &pass;
}

std::wstring TextOf(const LoggedPass& pass)
{
    std::wstring text;
    for (const Source& source : kSources) {
        const std::optional<long long>& time = pass.*source.time;
        text += FormatText(L"  %s\t%s\n", {source.name, time ? std::to_wstring(*time) + L" ms"
                                                             : std::wstring(L"not known")});
    }
    return text;
}

Json JsonOf(const LoggedPass& pass)
{
    Json json = Json::object();
    for (const Source& source : kSources) {
        const std::optional<long long>& time = pass.*source.time;
        json[source.jsonName] = time ? Json(*time) : Json(nullptr);
    }
    return json;
}
