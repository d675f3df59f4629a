// Results of the library as errors of the C++ standard library. Part of QanHelper.hpp; any thread.
#ifndef QANHELPER_RESULTS_HPP
#define QANHELPER_RESULTS_HPP

#include "../QanHelper.h"

#include <cstddef>
#include <iterator>
#include <string>
#include <system_error>

namespace qanh {

// A result that the library, or the system through it, is known to give.
struct KnownResult
{
    HRESULT value;
    const char* name;     // as it is called in the headers, "E_POINTER"
    const char* sentence; // what it means here, in English, without a full stop
};

namespace detail {

// Headers of some compilers lack the names of the activation manager's results, and warn of numbers that do
// not fit: everything goes through here.
constexpr HRESULT ToResult(unsigned long value) noexcept
{
    return static_cast<HRESULT>(value);
}

inline constexpr KnownResult kKnownResults[] = {
    {ToResult(0x00000000), "S_OK", "it was done"},
    {ToResult(0x00000001), "S_FALSE",
     "it was done in part: the library does not refresh its catalogue, or there is no name"},
    {ToResult(0x00270258), "S_STORE_LAUNCHED_FOR_REMEDIATION",
     "the Store was opened instead, because the package needs repair"},
    {ToResult(0x00270259), "S_APPLICATION_ACTIVATION_ERROR_HANDLED_BY_DIALOG",
     "the application was not started, and the system told the user so"},
    {ToResult(0x80004003), "E_POINTER", "a required pointer is null"},
    {ToResult(0x80004005), "E_FAIL",
     "it could not be done; of a launch by search: it is not known what the screen shows"},
    {ToResult(0x80010106), "RPC_E_CHANGED_MODE", "the thread is in a multithreaded apartment"},
    {ToResult(0x80040154), "REGDB_E_CLASSNOTREG", "the system does not have the class that is needed"},
    {ToResult(0x80070002), "ERROR_FILE_NOT_FOUND", "the file was not found"},
    {ToResult(0x80070005), "E_ACCESSDENIED", "access was denied"},
    {ToResult(0x8007000E), "E_OUTOFMEMORY", "the memory ran out"},
    {ToResult(0x80070020), "ERROR_SHARING_VIOLATION", "another program uses the file"},
    {ToResult(0x80070057), "E_INVALIDARG", "a required text is empty, or a mode is unknown"},
    {ToResult(0x8007007E), "ERROR_MOD_NOT_FOUND", "the DLL was not found, or one that it needs"},
    {ToResult(0x8007007F), "ERROR_PROC_NOT_FOUND", "the DLL lacks a function: it is another one"},
    {ToResult(0x800700C1), "ERROR_BAD_EXE_FORMAT", "the DLL is not one for 64-bit programs"},
    {ToResult(0x800704C7), "ERROR_CANCELLED", "it was stopped before"},
    {ToResult(0x80270250), "E_MONITOR_RESOLUTION_TOO_LOW", "the screen is too small for Store applications"},
    {ToResult(0x80270251), "E_ELEVATED_ACTIVATION_NOT_SUPPORTED",
     "an elevated program cannot start Store applications"},
    {ToResult(0x80270252), "E_UAC_DISABLED",
     "Store applications cannot be started while User Account Control is off"},
    {ToResult(0x80270253), "E_FULL_ADMIN_NOT_SUPPORTED",
     "the built-in Administrator cannot start Store applications"},
    {ToResult(0x80270254), "E_APPLICATION_NOT_REGISTERED", "there is no such application for this user"},
    {ToResult(0x8027025A), "E_APPLICATION_ACTIVATION_TIMED_OUT", "the application did not start in time"},
    {ToResult(0x8027025B), "E_APPLICATION_ACTIVATION_EXEC_FAILURE",
     "the application's process could not be started"},
    {ToResult(0xA0000001), "QANH_E_NO_PACKAGE", "no package of that family is installed for the user"},
    {ToResult(0xA0000002), "QANH_E_SEVERAL_APPLICATIONS",
     "the package holds more than one application, so it has no display name of its own"},
};

// "0x80004003".
inline std::string ToHexadecimal(HRESULT result)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += kDigits[(static_cast<unsigned long>(result) >> shift) & 0xF];
    }
    return text;
}

// The system's own sentence in UTF-8 and the user's language, without the line's end; "" when it has none.
inline std::string SystemSentence(HRESULT result)
{
    wchar_t text[512];
    DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       static_cast<DWORD>(result), 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) {
        --length;
    }
    if (length == 0) {
        return std::string();
    }
    // A UTF-16 unit takes three bytes at most.
    std::string sentence(std::size_t{length} * 3, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), &sentence[0],
                                         static_cast<int>(sentence.size()), nullptr, nullptr);
    sentence.resize(static_cast<std::size_t>(size));
    return sentence;
}

} // namespace detail

// What is known of a result; null: nothing.
inline const KnownResult* FindResult(HRESULT result) noexcept
{
    for (const KnownResult& known : detail::kKnownResults) {
        if (known.value == result) {
            return &known;
        }
    }
    return nullptr;
}

// "E_POINTER (0x80004003): a required pointer is null", in UTF-8. Of a result that is not known here, the
// number and the system's sentence. Throws std::bad_alloc.
inline std::string Describe(HRESULT result)
{
    const std::string number = detail::ToHexadecimal(result);
    const KnownResult* known = FindResult(result);
    if (known) {
        return std::string(known->name) + " (" + number + "): " + known->sentence;
    }
    const std::string sentence = detail::SystemSentence(result);
    return sentence.empty() ? number : number + ": " + sentence;
}

// The category of codes whose value is an HRESULT; its messages are those of Describe. Codes of this category
// compare with std::errc where there is a counterpart.
class ResultCategory final : public std::error_category
{
public:
    const char* name() const noexcept override { return "QanHelper"; }

    std::string message(int value) const override { return Describe(static_cast<HRESULT>(value)); }

    std::error_condition default_error_condition(int value) const noexcept override
    {
        switch (static_cast<unsigned>(value)) {
        case 0x80004003: // E_POINTER
        case 0x80070057: // E_INVALIDARG
            return std::errc::invalid_argument;
        case 0x8007000E: // E_OUTOFMEMORY
            return std::errc::not_enough_memory;
        case 0x80070005: // E_ACCESSDENIED
            return std::errc::permission_denied;
        case 0x80070002: // ERROR_FILE_NOT_FOUND
            return std::errc::no_such_file_or_directory;
        default:
            return std::error_condition(value, *this);
        }
    }
};

// The one category; lives to the end of the process.
inline const ResultCategory& Category() noexcept
{
    static const ResultCategory category;
    return category;
}

// The result as an error code. Success codes other than S_OK make one that counts as set, too.
inline std::error_code ToErrorCode(HRESULT result) noexcept
{
    return std::error_code(static_cast<int>(result), Category());
}

// What the wrapper throws. what() names the function and describes the result.
class Error : public std::system_error
{
public:
    Error(HRESULT result, const char* function) : std::system_error(ToErrorCode(result), function) {}

    HRESULT Result() const noexcept { return static_cast<HRESULT>(code().value()); }
};

namespace detail {

inline void ThrowIfFailed(HRESULT result, const char* function)
{
    if (FAILED(result)) {
        throw Error(result, function);
    }
}

} // namespace detail

} // namespace qanh

#endif
