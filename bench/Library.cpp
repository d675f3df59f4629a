// The built library as a host has it: its file, its start and its stop, what it does while it has nothing to
// do, and a launch, on the stand-in desktop.

#include "Library.h"

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"

#include <shobjidl.h>

#include <wrl/client.h>

#include <stdexcept>

using Microsoft::WRL::ComPtr;

namespace bench {

namespace {

constexpr std::size_t kRecords = 300;

// What the library's start does, by bare calls: the screen's object, the file, the thread that then waits.
class BareStart
{
public:
    explicit BareStart(const std::wstring& file)
    {
        if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) ||
            FAILED(CoCreateInstance(CLSID_AppVisibility, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_PPV_ARGS(m_visibility.GetAddressOf())))) {
            throw std::runtime_error("the screen's object cannot be had");
        }
        g_sink = WalkXml(file);
        m_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        m_thread = CreateThread(nullptr, 0, Wait, m_event, 0, nullptr);
    }
    ~BareStart()
    {
        Stop();
        m_visibility.Reset();
        CoUninitialize();
    }
    BareStart(const BareStart&) = delete;
    BareStart& operator=(const BareStart&) = delete;

    void Stop()
    {
        if (m_thread) {
            SetEvent(m_event);
            WaitForSingleObject(m_thread, INFINITE);
            CloseHandle(m_thread);
            CloseHandle(m_event);
            m_thread = nullptr;
        }
    }

private:
    static DWORD WINAPI Wait(void* event) { return WaitForSingleObject(event, INFINITE); }

    ComPtr<IAppVisibility> m_visibility;
    HANDLE m_event = nullptr;
    HANDLE m_thread = nullptr;
};

template <typename Action> double Time(Action action)
{
    const double begin = Now();
    action();
    return Now() - begin;
}

} // namespace

void MeasureStartAndStop(Session& session)
{
    const Library library;
    WriteXml(MakeCatalog(kRecords), library.CatalogFile());
    std::vector<double> starts;
    std::vector<double> bareStarts;
    std::vector<double> stops;
    std::vector<double> bareStops;
    // Each takes more than a second: a stop waits for the first pass, which begins after one.
    for (int round = session.isShort ? 3 : 15; round > 0; --round) {
        // The file of every round is the same, which the passes empty: no shortcut of it is there.
        WriteXml(MakeCatalog(kRecords), library.CatalogFile());
        starts.push_back(Time([&] { library.Initialize(); }));
        library.WaitForFirstPass();
        stops.push_back(Time([&] { library.Finalize(); }));

        WriteXml(MakeCatalog(kRecords), library.CatalogFile());
        std::unique_ptr<BareStart> bare;
        bareStarts.push_back(Time([&] { bare = std::make_unique<BareStart>(library.CatalogFile()); }));
        Sleep(20);
        bareStops.push_back(Time([&] { bare->Stop(); }));
    }
    session.Tell("start", kRecords, {{kOurs, starts}, {"bare start", bareStarts}});
    session.Tell("stop", kRecords, {{kOurs, stops}, {"bare stop", bareStops}});
}

void MeasureIdle(Session& session)
{
    const Library library;
    WriteXml(MakeCatalog(kRecords), library.CatalogFile());
    library.Initialize();
    library.WaitForFirstPass();
    const DWORD seconds = session.isShort ? 5 : 60;
    const double before = ProcessorTime();
    Sleep(seconds * 1000);
    const double taken = ProcessorTime() - before;
    library.Finalize();
    session.Tell("idle", seconds, {{kOurs, {taken}}});
}

void MeasureLaunch(Session& session)
{
    const Library library;
    WriteXml(MakeCatalog(kRecords), library.CatalogFile());
    const StandInDesktop desktop;
    library.Initialize();
    library.WaitForFirstPass();
    std::vector<double> beyond;
    for (int round = session.isShort ? 1 : 5; round > 0; --round) {
        beyond.push_back(library.LaunchBeyondPauses());
        desktop.ClosePane();
    }
    library.Finalize();
    session.Tell("launch", kRecords, {{kOurs, beyond}});
}

void MeasureFile(Session& session)
{
    session.Tell("file", 0, {{kOurs, {static_cast<double>(Library::FileSize()) / 1024}}});
}

} // namespace bench
