// The collections of packages: one that is walked, one with numbers.
#include "standin/Settings.h"
#include "standin/platform/PackageObjects.h"
#include "standin/platform/RuntimeObject.h"
#include "standin/platform/Unserved.h"

#include <utility>

namespace standin {

// The collections are always had from another object, never asked for by an ID.
template <> bool IsInterface<platform::IPackageIterable>(REFIID) noexcept
{
    return false;
}

template <> bool IsInterface<platform::IPackageIterator>(REFIID) noexcept
{
    return false;
}

template <> bool IsInterface<platform::IPackageVectorView>(REFIID) noexcept
{
    return false;
}

namespace {

constexpr auto outOfBounds = static_cast<HRESULT>(0x8000000B); // E_BOUNDS

class PackageIterator final : public UnservedPackageIterator<RuntimeObject<platform::IPackageIterator>>
{
public:
    explicit PackageIterator(const StorePackages& packages) : m_packages(packages) {}

    HRESULT STDMETHODCALLTYPE get_Current(platform::IPackage** current) override
    {
        return Give(current, [&] { return Has() ? MakePackage(m_packages[m_place], current) : outOfBounds; });
    }

    HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) override
    {
        return Give(hasCurrent, [&] { *hasCurrent = Has() ? 1 : 0; });
    }

    HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) override
    {
        return Give(hasCurrent, [&] {
            if (++m_moves == GetSetting(Setting::FailMoveNextAt)) {
                Check(GetFailure(Setting::FailMoveNext));
                Check(E_FAIL);
            }
            Check(Has() ? S_OK : outOfBounds);
            ++m_place;
            *hasCurrent = Has() ? 1 : 0;
        });
    }

private:
    [[nodiscard]] bool Has() const noexcept { return m_place < m_packages.size(); }

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

class PackageList final : public UnservedPackageList<RuntimeObject<platform::IPackageVectorView>>
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
        return Give(size, [&] { *size = static_cast<UINT32>(m_packages.size()); });
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
