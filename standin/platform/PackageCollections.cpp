// The collections of packages: one that is walked, one with numbers.
#include "standin/Settings.h"
#include "standin/platform/PackageObjects.h"
#include "standin/platform/RuntimeObject.h"

#include <algorithm>

namespace standin {

// A collection's ID is made of the IDs of its kind and of its elements, so its declaration has none.
template <> bool IsInterface<platform::IPackageIterable>(REFIID interfaceId) noexcept
{
    constexpr IID own = {0x69ad6aa7, 0x0c49, 0x5f27, {0xa5, 0xeb, 0xef, 0x4d, 0x59, 0x46, 0x7b, 0x6d}};
    return IsEqualIID(interfaceId, own) != FALSE;
}

template <> bool IsInterface<platform::IPackageIterator>(REFIID interfaceId) noexcept
{
    constexpr IID own = {0x0217f069, 0x025c, 0x5ee6, {0xa8, 0x7f, 0xe7, 0x82, 0xe3, 0xb6, 0x23, 0xae}};
    return IsEqualIID(interfaceId, own) != FALSE;
}

template <> bool IsInterface<platform::IPackageVectorView>(REFIID interfaceId) noexcept
{
    constexpr IID own = {0x0263c4d4, 0x195c, 0x5dc5, {0xa7, 0xca, 0x68, 0x06, 0xce, 0xca, 0x42, 0x0b}};
    return IsEqualIID(interfaceId, own) != FALSE;
}

namespace {

constexpr auto outOfBounds = static_cast<HRESULT>(0x8000000B); // E_BOUNDS

// Hands out up to capacity packages from start on.
HRESULT GivePackages(const StorePackages& packages, size_t start, UINT32 capacity,
                     platform::IPackage** values, UINT32* actual) noexcept
{
    return Give(actual, [&] {
        if (!values) {
            return E_POINTER;
        }
        for (size_t index = start; index < packages.size() && *actual < capacity; ++index) {
            const HRESULT hr = MakePackage(packages[index], &values[*actual]);
            if (FAILED(hr)) {
                return hr;
            }
            ++*actual;
        }
        return S_OK;
    });
}

class PackageIterator final : public RuntimeObject<platform::IPackageIterator>
{
public:
    explicit PackageIterator(const StorePackages& packages) : m_packages(packages) {}

    HRESULT STDMETHODCALLTYPE get_Current(platform::IPackage** current) override
    {
        return Give(current, [&] {
            return m_place < m_packages.size() ? MakePackage(m_packages[m_place], current) : outOfBounds;
        });
    }

    HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) override
    {
        return Give(hasCurrent, [&] {
            *hasCurrent = m_place < m_packages.size() ? 1 : 0;
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) override
    {
        return Give(hasCurrent, [&] {
            if (++m_moves == GetSetting(Setting::FailMoveNextAt)) {
                const HRESULT failure = GetFailure(Setting::FailMoveNext);
                return FAILED(failure) ? failure : E_FAIL;
            }
            if (m_place >= m_packages.size()) {
                return outOfBounds;
            }
            ++m_place;
            return get_HasCurrent(hasCurrent);
        });
    }

    HRESULT STDMETHODCALLTYPE GetMany(UINT32 capacity, platform::IPackage** values, UINT32* actual) override
    {
        const HRESULT hr = GivePackages(m_packages, m_place, capacity, values, actual);
        if (SUCCEEDED(hr)) {
            m_place += *actual;
        }
        return hr;
    }

private:
    StorePackages m_packages;
    size_t m_place = 0;
    DWORD m_moves = 0;
};

class PackageCollection final : public RuntimeObject<platform::IPackageIterable>
{
public:
    explicit PackageCollection(StorePackages packages) noexcept : m_packages(std::move(packages)) {}

    HRESULT STDMETHODCALLTYPE First(platform::IPackageIterator** first) override
    {
        return Give(first, [&] { return MakeObject<PackageIterator>(first, m_packages); });
    }

private:
    StorePackages m_packages;
};

class PackageList final : public RuntimeObject<platform::IPackageVectorView>
{
public:
    explicit PackageList(StorePackages packages) noexcept : m_packages(std::move(packages)) {}

    HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, platform::IPackage** item) override
    {
        return Give(item, [&] {
            return index < m_packages.size() ? MakePackage(m_packages[index], item) : outOfBounds;
        });
    }

    HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override
    {
        return Give(size, [&] {
            *size = static_cast<UINT32>(m_packages.size());
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE IndexOf(platform::IPackage*, UINT32* index, boolean* found) override
    {
        // Every question makes objects anew, so none is in the list.
        return Give(index, [&] { return Give(found, [] { return S_OK; }); });
    }

    HRESULT STDMETHODCALLTYPE GetMany(UINT32 start, UINT32 capacity, platform::IPackage** values,
                                      UINT32* actual) override
    {
        return GivePackages(m_packages, start, capacity, values, actual);
    }

private:
    StorePackages m_packages;
};

} // namespace

HRESULT MakePackageCollection(StorePackages packages, platform::IPackageIterable** collection) noexcept
{
    return MakeObject<PackageCollection>(collection, std::move(packages));
}

HRESULT MakePackageList(StorePackages packages, platform::IPackageVectorView** list) noexcept
{
    return MakeObject<PackageList>(list, std::move(packages));
}

} // namespace standin
