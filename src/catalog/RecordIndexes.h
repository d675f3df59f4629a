#pragma once

#include "catalog/DesktopApp.h"
#include "catalog/Package.h"
#include "common/CaseInsensitiveSet.h"

#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

// The catalogue's packages by their family names, to the letter. A package without one cannot be found. Of
// several of one name it knows the first.
class PackageIndex
{
public:
    void Add(CQanhPackage& package)
    {
        if (package.PackageFamilyName.empty()) {
            return;
        }
        if (!m_packages) {
            m_packages = std::make_unique<Packages>();
        }
        m_packages->emplace(package.PackageFamilyName.View(), &package);
    }
    void Clear() noexcept { m_packages.reset(); } // gives its memory back too
    void Swap(PackageIndex& other) noexcept { m_packages.swap(other.m_packages); }

    // Null when there is none.
    [[nodiscard]] const CQanhPackage* Find(std::wstring_view packageFamilyName) const noexcept
    {
        if (!m_packages) {
            return nullptr;
        }
        const auto found = m_packages->find(packageFamilyName);
        return found != m_packages->end() ? found->second : nullptr;
    }
    [[nodiscard]] CQanhPackage* Find(std::wstring_view packageFamilyName) noexcept
    {
        return const_cast<CQanhPackage*>(std::as_const(*this).Find(packageFamilyName));
    }

private:
    using Packages = std::unordered_map<std::wstring_view, CQanhPackage*>;

    // Null while it knows none: the making of an empty map takes memory with some C++ libraries.
    std::unique_ptr<Packages> m_packages;
};

// Which shortcuts the catalogue's desktop applications have, ignoring case.
class ShortcutIndex
{
public:
    void Add(const CQanhDesktopApp& app) { m_shortcuts.Add(app.LnkFileName.c_str()); }
    void Clear() noexcept { m_shortcuts.Clear(); }
    void Swap(ShortcutIndex& other) noexcept { m_shortcuts.Swap(other.m_shortcuts); }

    [[nodiscard]] bool Contains(const wchar_t* path) const noexcept { return m_shortcuts.Contains(path); }

private:
    CaseInsensitiveSet m_shortcuts;
};
