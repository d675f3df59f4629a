#include "Failure.h"

#include "QanHelper.h"
#include "common/FormatText.h"

#include <xmllite.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

struct KnownResult
{
    HRESULT result;
    const wchar_t* name;
    const wchar_t* meaning;
};

// HRESULT_FROM_WIN32() as a constant.
constexpr HRESULT OfSystem(unsigned error)
{
    return static_cast<HRESULT>(0x80070000u | error);
}

// The result, or the system's error, of that name, and the name.
#define OF_PLATFORM(name) static_cast<HRESULT>(name), L"" #name
#define OF_SYSTEM(name) OfSystem(name), L"" #name

constexpr KnownResult kKnownResults[] = {
    {OF_PLATFORM(E_FAIL), L"the system does not say why"},
    {OF_PLATFORM(E_OUTOFMEMORY), L"there is not enough memory"},
    {OF_PLATFORM(E_INVALIDARG), L"an empty or impossible value"},
    {OF_PLATFORM(E_POINTER), L"nothing was handed over where something must be"},
    {OF_PLATFORM(REGDB_E_CLASSNOTREG), L"this system has no such object"},
    {OF_PLATFORM(RPC_E_CHANGED_MODE), L"the thread is in an apartment of the other kind"},
    {OF_PLATFORM(CO_E_NOTINITIALIZED), L"the thread is in no apartment"},
    {OF_PLATFORM(QANH_E_NO_PACKAGE), L"no package of this family is installed"},
    {OF_PLATFORM(QANH_E_SEVERAL_APPLICATIONS), L"the package has several applications"},
    {OF_SYSTEM(ERROR_FILE_NOT_FOUND), L"there is no such file"},
    {OF_SYSTEM(ERROR_PATH_NOT_FOUND), L"there is no such folder"},
    {OF_SYSTEM(ERROR_ACCESS_DENIED), L"this user may not, or it is a folder"},
    {OF_SYSTEM(ERROR_SHARING_VIOLATION), L"another program holds the file"},
    {OF_SYSTEM(ERROR_INVALID_NAME), L"no file can have this name"},
    {OF_SYSTEM(ERROR_FILE_EXISTS), L"there is a file of this name"},
    {OF_SYSTEM(ERROR_BROKEN_PIPE), L"who read the output has ended"},
    {OF_SYSTEM(ERROR_NO_DATA), L"who read the output has ended"},
    {OF_SYSTEM(ERROR_NOT_ENOUGH_MEMORY), L"there is not enough memory"},
    {OfSystem(1295), L"ERROR_DISK_QUOTA_EXCEEDED", L"the user's quota is used up"},
    {static_cast<HRESULT>(0x80270250), L"E_MONITOR_RESOLUTION_TOO_LOW",
     L"the screen is too small for Store applications"},
    {static_cast<HRESULT>(0x80270251), L"E_ELEVATED_ACTIVATION_NOT_SUPPORTED",
     L"an elevated program cannot start Store applications"},
    {static_cast<HRESULT>(0x80270252), L"E_UAC_DISABLED", L"User Account Control is off"},
    {static_cast<HRESULT>(0x80270253), L"E_FULL_ADMIN_NOT_SUPPORTED", L"the built-in Administrator may not"},
    {static_cast<HRESULT>(0x80270254), L"E_APPLICATION_NOT_REGISTERED",
     L"there is no such application for this user"},
    {static_cast<HRESULT>(0x00270258), L"S_STORE_LAUNCHED_FOR_REMEDIATION",
     L"the Store was opened instead: the package needs repair"},
    {static_cast<HRESULT>(0x00270259), L"S_APPLICATION_ACTIVATION_ERROR_HANDLED_BY_DIALOG",
     L"the system told the user why"},
    {static_cast<HRESULT>(0x8027025A), L"E_APPLICATION_ACTIVATION_TIMED_OUT", L"it did not start in time"},
    {static_cast<HRESULT>(0x8027025B), L"E_APPLICATION_ACTIVATION_EXEC_FAILURE",
     L"its process could not be started"},
    {OF_SYSTEM(ERROR_MOD_NOT_FOUND), L"there is no such DLL, or one that it needs"},
    {OF_SYSTEM(ERROR_PROC_NOT_FOUND), L"the DLL lacks a function"},
    {OF_SYSTEM(ERROR_BAD_EXE_FORMAT), L"no DLL for 64-bit programs"},
    {OF_SYSTEM(ERROR_FILENAME_EXCED_RANGE), L"the path is too long"},
    {OF_SYSTEM(WAIT_TIMEOUT), L"it took too long"},
    {OF_SYSTEM(ERROR_DISK_FULL), L"the disk is full"},
    {OF_PLATFORM(MX_E_INPUTEND), L"the document ends too early"},
    {OF_PLATFORM(MX_E_ENCODING), L"bytes that are no text in its encoding"},
    {OF_PLATFORM(WC_E_WHITESPACE), L"a blank is missing"},
    {OF_PLATFORM(WC_E_SEMICOLON), L"a semicolon is missing, as behind \"&amp\""},
    {OF_PLATFORM(WC_E_GREATERTHAN), L"a \">\" is missing"},
    {OF_PLATFORM(WC_E_QUOTE), L"a quotation mark is missing"},
    {OF_PLATFORM(WC_E_EQUAL), L"a \"=\" is missing"},
    {OF_PLATFORM(WC_E_LESSTHAN), L"a \"<\" inside a value is to be \"&lt;\""},
    {OF_PLATFORM(WC_E_XMLCHARACTER), L"a character that XML cannot hold"},
    {OF_PLATFORM(WC_E_SYNTAX), L"this is no XML"},
    {OF_PLATFORM(WC_E_NAME), L"no name of an element or attribute"},
    {OF_PLATFORM(WC_E_ROOTELEMENT), L"there is no root element"},
    {OF_PLATFORM(WC_E_ELEMENTMATCH), L"an end tag of another element"},
    {OF_PLATFORM(WC_E_UNIQUEATTRIBUTE), L"an attribute stands twice"},
    {OF_PLATFORM(WC_E_ENCNAME), L"an encoding that the reader does not know"},
    {OF_PLATFORM(WC_E_UNDECLAREDENTITY), L"an entity that XML does not know"},
    {OF_PLATFORM(MX_E_ENCODINGSWITCH), L"its encoding is not the one that it declares"},
    {OF_PLATFORM(MX_E_ENCODINGSIGNATURE), L"its first bytes are of no encoding that the reader knows"},
    {OF_PLATFORM(WC_E_HEXDIGIT), L"a hexadecimal digit is missing"},
    {OF_PLATFORM(WC_E_DIGIT), L"a digit is missing"},
    {OF_PLATFORM(WC_E_LEFTBRACKET), L"a \"[\" is missing"},
    {OF_PLATFORM(WC_E_LEFTPAREN), L"a \"(\" is missing"},
    {OF_PLATFORM(WC_E_NAMECHARACTER), L"a character that no name can hold"},
    {OF_PLATFORM(WC_E_CDSECT), L"a CDATA section begins wrongly"},
    {OF_PLATFORM(WC_E_COMMENT), L"a comment with \"--\" in it, or that begins wrongly"},
    {OF_PLATFORM(WC_E_TEXTXMLDECL), L"a wrong XML declaration"},
    {OF_PLATFORM(WC_E_LEADINGXML), L"something stands before the XML declaration"},
    {OF_PLATFORM(WC_E_XMLDECL), L"a wrong XML declaration"},
    {OF_PLATFORM(WC_E_PI), L"a wrong processing instruction"},
    {OF_PLATFORM(WC_E_QUESTIONMARK), L"a \"?\" is missing"},
    {OF_PLATFORM(WC_E_CDSECTEND), L"a \"]]>\" in a text"},
    {OF_PLATFORM(WC_E_MOREDATA), L"something stands behind the end of the document"},
    {OF_PLATFORM(WC_E_INVALIDXMLSPACE), L"a wrong value of xml:space"},
    {OF_PLATFORM(NC_E_QNAMECHARACTER), L"a character that no name can hold"},
    {OF_PLATFORM(NC_E_QNAMECOLON), L"a name with several \":\""},
    {OF_PLATFORM(NC_E_NAMECOLON), L"a \":\" in a name that must not have one"},
    {OF_PLATFORM(NC_E_DECLAREDPREFIX), L"a prefix is declared twice"},
    {OF_PLATFORM(NC_E_UNDECLAREDPREFIX), L"a prefix that is not declared"},
    {OF_PLATFORM(NC_E_EMPTYURI), L"a prefix is declared without a value"},
    {OF_PLATFORM(NC_E_XMLPREFIXRESERVED), L"the prefix xml is declared otherwise"},
    {OF_PLATFORM(NC_E_XMLNSPREFIXRESERVED), L"the prefix xmlns is declared"},
    {OF_PLATFORM(SC_E_MAXELEMENTDEPTH), L"elements stand too deep in one another"},
    {OF_PLATFORM(SC_E_MAXENTITYEXPANSION), L"too many entities in one another"},
    {OF_SYSTEM(ERROR_INVALID_HANDLE), L"the handle is not, or no longer, one of an object"},
    {OF_PLATFORM(WC_E_DTDPROHIBITED), L"a DOCTYPE is not allowed"},
};

#undef OF_PLATFORM
#undef OF_SYSTEM

// " (The handle is invalid)", or empty.
std::wstring SystemsWord(HRESULT result)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, static_cast<DWORD>(result), 0, text, 512, nullptr);
    while (length > 0 && (text[length - 1] == L' ' || text[length - 1] == L'.')) {
        --length;
    }
    return length == 0 ? L"" : L" (" + std::wstring(text, length) + L")";
}

} // namespace

std::wstring Described(HRESULT result)
{
    wchar_t number[16];
    _snwprintf_s(number, 16, _TRUNCATE, L"0x%08X", static_cast<unsigned>(result));
    const auto known = std::find_if(std::begin(kKnownResults), std::end(kKnownResults),
                                    [result](const KnownResult& entry) { return entry.result == result; });
    return known == std::end(kKnownResults)
               ? number + SystemsWord(result)
               : FormatText(L"%s %s (%s)", {number, known->name, known->meaning});
}
