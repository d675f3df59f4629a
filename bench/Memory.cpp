// What the catalogue takes of the heap.

#include "BareXml.h"
#include "Catalogs.h"
#include "Measures.h"
#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"
#include "support/host/Measures.h"

#include <malloc.h>

#include <algorithm>
#include <stdexcept>

namespace bench {

namespace {

// What the program allocates and frees until the end of the scope, in bytes: at the most so much at once. The
// operator new of the program allocates with malloc. One at a time; one thread.
class PeakWatch
{
public:
    PeakWatch() : m_malloc("malloc", Allocate), m_free("free", Free)
    {
        s_malloc = m_malloc.Original();
        s_free = m_free.Original();
        s_now = 0;
        s_most = 0;
    }

    [[nodiscard]] static long long Most() { return s_most; }

private:
    static void* Allocate(std::size_t size)
    {
        void* block = s_malloc(size);
        if (block) {
            s_now += static_cast<long long>(_msize(block));
            s_most = std::max(s_most, s_now);
        }
        return block;
    }
    static void Free(void* block)
    {
        if (block) {
            s_now -= static_cast<long long>(_msize(block));
        }
        s_free(block);
    }

    static inline void* (*s_malloc)(std::size_t) = &std::malloc;
    static inline void (*s_free)(void*) = &std::free;
    static inline long long s_now = 0;
    static inline long long s_most = 0;

    test::ImportPatch<void* (*)(std::size_t)> m_malloc;
    test::ImportPatch<void (*)(void*)> m_free;
};

// With the null characters at their ends.
std::size_t TextBytes(const Catalog& catalog)
{
    std::size_t characters = 0;
    const auto add = [&](const std::wstring& text) { characters += text.empty() ? 0 : text.size() + 1; };
    for (const StorePackage& package : catalog.packages) {
        add(package.familyName);
        for (const StoreApp& app : package.apps) {
            add(app.displayName);
            add(app.shortName);
            add(app.reading);
        }
    }
    for (const DesktopApp& app : catalog.desktopApps) {
        add(app.displayName);
        add(app.shortcut);
        add(app.reading);
    }
    return characters * sizeof(wchar_t);
}

// The first look-up does so.
void CompleteIndexes(const CQanhAppNameList& list)
{
    if (list.IsInDesktopAppList(L"C:\\none.lnk")) {
        throw std::runtime_error("a shortcut that no record has was found");
    }
}

// Packages count too.
std::size_t Records(const Catalog& catalog, std::size_t applications)
{
    return applications + catalog.packages.size();
}

} // namespace

void MeasureMemory(Session& session)
{
    const test::TemporaryFolder folder;
    const std::wstring file = folder / L"catalogue.xml";
    for (const std::size_t size : session.isShort ? Sizes{1000, 10000} : Sizes{1000, 10000, 100000}) {
        const Catalog catalog = MakeCatalog(size);
        WriteXml(catalog, file);
        const std::size_t text = TextBytes(catalog);
        const double records = static_cast<double>(Records(catalog, size));
        const std::size_t before = host::HeapBytes();
        const std::unique_ptr<CQanhAppNameList> list = LoadList(file);
        CompleteIndexes(*list);
        const std::size_t after = host::HeapBytes();
        session.Tell("memory", size, {{kOurs, {static_cast<double>(after - before - text) / records}}});

        std::unique_ptr<CQanhAppNameList> other;
        long long most = 0;
        {
            const PeakWatch watch;
            other = LoadList(file);
            CompleteIndexes(*other);
            most = watch.Most();
        }
        session.Tell("memory-peak", size,
                     {{kOurs, {static_cast<double>(most - static_cast<long long>(text)) / records}}});
    }
}

} // namespace bench
