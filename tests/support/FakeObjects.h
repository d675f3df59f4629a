#pragma once

#include "support/Apartments.h"
#include "support/Current.h"
#include "support/ImportPatch.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <windows.h>

#include <hstring.h>
#include <inspectable.h>
#include <winstring.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The interfaces of COM have no virtual destructor: their objects are never deleted through them.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace test {

class FakeObject;

// Keeps the fakes of the platform's objects for a test, and a journal of what is done with them. Every call
// has a name; it can be made to fail and can run an action of the test first. The objects live as long as
// this, so that a reference given back twice, or used after that, is seen and does no harm. They live in
// apartments: on a thread that has entered none itself calls fail with CO_E_NOTINITIALIZED, and neither they
// nor what is done with references there is forgiven. One at a time; one thread at a time.
class FakeObjects : private Current<FakeObjects>
{
public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    FakeObjects() = default;
    // What was handed out must be back by then.
    ~FakeObjects() { EXPECT_THAT(Leaks(), ::testing::IsEmpty()); }

    template <typename Class, typename... Arguments> Class* Make(Arguments&&... arguments)
    {
        auto object = std::make_unique<Class>(*this, std::forward<Arguments>(arguments)...);
        Class* result = object.get();
        m_objects.push_back(std::move(object));
        return result;
    }

    // The call of this index (0 is the first of its name) fails with the result; all of them by default.
    void Fail(const std::string& call, HRESULT result, std::size_t index = kNone)
    {
        m_failures.push_back({call, index, result});
    }
    // The call of this index, whatever its name, fails with the result.
    void FailCall(std::size_t index, HRESULT result) { m_failures.push_back({"", index, result}); }
    // Runs the action at the start of a call.
    void At(const std::string& call, std::function<void()> action, std::size_t index = kNone)
    {
        m_actions.push_back({call, index, std::move(action)});
    }

    // For a fake: notes a call and returns the result that the test wants of it. Without an object the call
    // is of a function of the platform.
    HRESULT Enter(const FakeObject* object, const char* call, const std::wstring& arguments = L"");
    // The same for a function of the platform that hands out an object: it too fails without an apartment.
    HRESULT EnterMaker(const char* call, const std::wstring& arguments = L"")
    {
        const HRESULT hr = Enter(nullptr, call, arguments);
        return SUCCEEDED(hr) && ApartmentOfThread() == Apartment::kNone ? CO_E_NOTINITIALIZED : hr;
    }
    // For a fake: notes something else. What begins with a blank is no call.
    void Note(std::string event)
    {
        if (!isQuiet) {
            journal.push_back(std::move(event));
        }
    }
    // Such a thing, with its result: "CoInitialize = 0x00000000".
    void NoteResult(const std::string& event, HRESULT result) { Note(event + " = " + Hexadecimal(result)); }
    // For a fake of the Windows Runtime: from now on the release of strings is watched.
    void WatchStrings()
    {
        if (!m_deleteString) {
            m_deleteString.emplace("WindowsDeleteString", DeleteString);
        }
    }
    // For such a fake: a string, whose release is watched.
    HRESULT MakeString(const std::wstring& text, HSTRING* value)
    {
        const HRESULT hr = WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), value);
        m_strings += *value ? 1 : 0;
        return hr;
    }

    // For a fake: what must not be done and has no result to tell that.
    void NoteMisuse(std::string misuse) { m_misuses.push_back(std::move(misuse)); }

    // What was misused, and what is wrong with the references and the strings: nothing when all were given
    // back exactly once.
    [[nodiscard]] std::vector<std::string> Leaks() const;
    // Whether somebody holds an object: nobody may when the thread leaves its last apartment.
    [[nodiscard]] bool IsAnyHeld() const;
    // The calls that were made, the failed ones included.
    [[nodiscard]] std::size_t Calls() const { return m_calls; }
    [[nodiscard]] std::size_t Calls(const std::string& call) const
    {
        const auto count = m_counts.find(call);
        return count == m_counts.end() ? 0 : count->second;
    }

    std::vector<std::string> journal;
    // Notes and counts nothing: for tests in which every allocation of the thread counts.
    bool isQuiet = false;

private:
    struct Failure
    {
        std::string call;
        std::size_t index;
        HRESULT result;
    };
    struct Action
    {
        std::string call;
        std::size_t index;
        std::function<void()> action;
    };

    static HRESULT WINAPI DeleteString(HSTRING string)
    {
        if (s_current && string) {
            --s_current->m_strings;
        }
        return s_current ? s_current->m_deleteString->Original()(string) : S_OK;
    }

    friend Current<FakeObjects>;

    std::optional<ImportPatch<decltype(&WindowsDeleteString)>> m_deleteString;
    std::vector<std::unique_ptr<FakeObject>> m_objects;
    std::vector<Failure> m_failures;
    std::vector<Action> m_actions;
    std::map<std::string, std::size_t> m_counts;
    std::vector<std::string> m_misuses;
    std::size_t m_calls = 0;
    long m_strings = 0;
};

// What every fake has: a label for messages, and references.
class FakeObject
{
public:
    FakeObject(FakeObjects& owner, std::string label) : m_owner(owner), m_label(std::move(label)) {}
    virtual ~FakeObject() = default;
    FakeObject(const FakeObject&) = delete;
    FakeObject& operator=(const FakeObject&) = delete;

    [[nodiscard]] LONG References() const { return m_references; }
    [[nodiscard]] const std::string& Label() const { return m_label; }

protected:
    ULONG Hold()
    {
        CheckApartment("AddRef");
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG Drop()
    {
        CheckApartment("Release");
        return static_cast<ULONG>(InterlockedDecrement(&m_references));
    }

    FakeObjects& m_owner;

private:
    void CheckApartment(const char* call)
    {
        if (ApartmentOfThread() == Apartment::kNone) {
            m_owner.NoteMisuse(std::string(call) + " of the " + m_label + " without an apartment");
        }
    }

    std::string m_label;
    volatile LONG m_references = 0;
};

inline HRESULT FakeObjects::Enter(const FakeObject* object, const char* call, const std::wstring& arguments)
{
    const bool hasApartment = !object || ApartmentOfThread() != Apartment::kNone;
    if (!hasApartment) {
        NoteMisuse(std::string(call) + " of the " + object->Label() + " without an apartment");
    }
    if (isQuiet) {
        return hasApartment ? S_OK : CO_E_NOTINITIALIZED;
    }
    if (object && object->References() <= 0) {
        NoteMisuse(std::string(call) + " of the " + object->Label() + " without a reference");
    }
    journal.push_back(arguments.empty() ? call : std::string(call) + ToUtf8(arguments));
    const std::size_t number = m_calls++;
    const std::size_t index = m_counts[call]++;
    for (const Action& action : m_actions) {
        if (action.call == call && (action.index == kNone || action.index == index)) {
            action.action();
        }
    }
    for (const Failure& failure : m_failures) {
        const bool isMeant = failure.call.empty()
                                 ? failure.index == number
                                 : failure.call == call && (failure.index == kNone || failure.index == index);
        if (isMeant) {
            return failure.result;
        }
    }
    return hasApartment ? S_OK : CO_E_NOTINITIALIZED;
}

inline std::vector<std::string> FakeObjects::Leaks() const
{
    std::vector<std::string> leaks = m_misuses;
    for (const auto& object : m_objects) {
        if (object->References() != 0) {
            leaks.push_back(object->Label() + ": " + std::to_string(object->References()) + " references");
        }
    }
    if (m_strings != 0) {
        leaks.push_back(std::to_string(m_strings) + " strings");
    }
    return leaks;
}

inline bool FakeObjects::IsAnyHeld() const
{
    return std::any_of(m_objects.begin(), m_objects.end(),
                       [](const auto& object) { return object->References() > 0; });
}

// An object of COM with one interface. What it answers to QueryInterface is Ask()'s, noted as a call.
template <typename Interface> class FakeUnknown : public FakeObject, public Interface
{
public:
    using Served = Interface;
    using FakeObject::FakeObject;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        *object = nullptr;
        const HRESULT hr = m_owner.Enter(this, "QueryInterface");
        if (FAILED(hr)) {
            return hr;
        }
        IUnknown* answer = Ask(id);
        if (!answer) {
            return E_NOINTERFACE;
        }
        answer->AddRef();
        *object = answer;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return Hold(); }
    ULONG STDMETHODCALLTYPE Release() override { return Drop(); }

protected:
    // Without a reference; null for an interface that is not there.
    virtual IUnknown* Ask(REFIID) { return nullptr; }

    // The call: the method that this stands in, when nothing else is said.
    HRESULT NotImplemented(const char* call = __builtin_FUNCTION())
    {
        m_owner.Enter(this, call);
        return E_NOTIMPL;
    }

    // Hands out an object, or the result that the test wants of the call.
    template <typename Given, typename Out>
    HRESULT Give(const char* call, Given* given, Out** value, const std::wstring& arguments = L"")
    {
        const HRESULT hr = m_owner.Enter(this, call, arguments);
        if (SUCCEEDED(hr)) {
            given->AddRef();
            *value = given;
        }
        return hr;
    }
    template <typename Value> HRESULT GiveValue(const char* call, const Value& given, Value* value)
    {
        const HRESULT hr = m_owner.Enter(this, call);
        if (SUCCEEDED(hr)) {
            *value = given;
        }
        return hr;
    }
    HRESULT GiveText(const char* call, const std::wstring& text, HSTRING* value)
    {
        const HRESULT hr = m_owner.Enter(this, call);
        return FAILED(hr) ? hr : m_owner.MakeString(text, value);
    }
};

// An object of the Windows Runtime with one interface.
template <typename Interface> class FakeInspectable : public FakeUnknown<Interface>
{
public:
    FakeInspectable(FakeObjects& owner, std::string label) : FakeUnknown<Interface>(owner, std::move(label))
    {
        owner.WatchStrings();
    }

    HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }
};

} // namespace test
