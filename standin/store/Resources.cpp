#include "standin/store/Resources.h"

#include "standin/Settings.h"
#include "standin/Text.h"

namespace standin {

namespace {

constexpr std::wstring_view referencePrefix = L"ms-resource:";
constexpr std::wstring_view addressPrefix = L"ms-resource://";
constexpr std::wstring_view defaultSubtree = L"resources/"; // of references that are a bare name

// "name/key" into its two parts.
void SplitAddress(std::wstring_view address, std::wstring& name, std::wstring& key)
{
    const size_t slash = address.find(L'/');
    name = address.substr(0, slash);
    key = slash == std::wstring_view::npos ? std::wstring_view() : address.substr(slash + 1);
}

std::wstring_view WithoutSlashes(std::wstring_view text) noexcept
{
    const size_t start = text.find_first_not_of(L'/');
    return start == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(start, text.find_last_not_of(L'/') - start + 1);
}

const std::wstring* FindReference(const StorePackage& package, std::wstring_view reference)
{
    if (StartsWithIgnoringCase(reference, addressPrefix)) {
        std::wstring name;
        std::wstring key;
        SplitAddress(reference.substr(addressPrefix.size()), name, key);
        const bool isOwn = name.empty() || EqualIgnoringCase(name, package.name);
        return isOwn ? FindResource(package, WithoutSlashes(key)) : nullptr;
    }
    const std::wstring_view key = WithoutSlashes(reference.substr(referencePrefix.size()));
    const std::wstring* text = FindResource(package, std::wstring(defaultSubtree) + std::wstring(key));
    return text ? text : FindResource(package, key);
}

} // namespace

std::optional<ResourceSource> ParseResourceSource(std::wstring_view source)
{
    constexpr std::wstring_view opening = L"@{";
    if (source.size() <= opening.size() || source.substr(0, opening.size()) != opening ||
        source.back() != L'}') {
        return std::nullopt;
    }
    source = source.substr(opening.size(), source.size() - opening.size() - 1);
    const size_t mark = source.find(L'?');
    if (mark == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::wstring_view address = Trimmed(source.substr(mark + 1));
    if (!StartsWithIgnoringCase(address, addressPrefix)) {
        return std::nullopt;
    }
    ResourceSource parsed;
    parsed.fullName = source.substr(0, mark);
    SplitAddress(address.substr(addressPrefix.size()), parsed.name, parsed.key);
    return parsed;
}

const std::wstring* FindResource(const StorePackage& package, std::wstring_view key)
{
    if (key.empty()) {
        return nullptr;
    }
    const std::wstring* text = package.ini.Find(GetLanguage(), key);
    return text ? text : package.ini.Find(defaultLanguage, key);
}

HRESULT LoadResource(const ResourceSource& source, std::wstring& text)
{
    for (const auto& package : ReadPackageStore()) {
        if (!package->isInstalled || !EqualIgnoringCase(package->fullName, source.fullName) ||
            !EqualIgnoringCase(package->name, source.name)) {
            continue;
        }
        if (const std::wstring* found = FindResource(*package, source.key)) {
            text = *found;
            return S_OK;
        }
    }
    return resourceNotFound;
}

std::wstring ResolveText(const StorePackage& package, const std::wstring& value)
{
    const std::wstring* text =
        StartsWithIgnoringCase(value, referencePrefix) ? FindReference(package, value) : nullptr;
    return text ? *text : value;
}

std::wstring DisplayName(const StorePackage& package, const ManifestApplication& application)
{
    if (const std::wstring* name = application.Find(L"DisplayName"); name && !name->empty()) {
        return ResolveText(package, *name);
    }
    const std::wstring* id = application.Find(L"Id");
    return id ? *id : std::wstring();
}

} // namespace standin
