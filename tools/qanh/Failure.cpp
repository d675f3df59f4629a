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

constexpr KnownResult kKnownResults[] = {
    {E_FAIL, L"E_FAIL", L"the system does not say why"},
    {E_OUTOFMEMORY, L"E_OUTOFMEMORY", L"there is not enough memory"},
    {E_INVALIDARG, L"E_INVALIDARG", L"an empty or impossible value"},
    {E_POINTER, L"E_POINTER", L"nothing was handed over where something must be"},
    {REGDB_E_CLASSNOTREG, L"REGDB_E_CLASSNOTREG", L"this system has no such object"},
    {RPC_E_CHANGED_MODE, L"RPC_E_CHANGED_MODE", L"the thread is in an apartment of the other kind"},
    {CO_E_NOTINITIALIZED, L"CO_E_NOTINITIALIZED", L"the thread is in no apartment"},
    {QANH_E_NO_PACKAGE, L"QANH_E_NO_PACKAGE", L"no package of this family is installed"},
    {QANH_E_SEVERAL_APPLICATIONS, L"QANH_E_SEVERAL_APPLICATIONS", L"the package has several applications"},
    {OfSystem(ERROR_FILE_NOT_FOUND), L"ERROR_FILE_NOT_FOUND", L"there is no such file"},
    {OfSystem(ERROR_PATH_NOT_FOUND), L"ERROR_PATH_NOT_FOUND", L"there is no such folder"},
    {OfSystem(ERROR_ACCESS_DENIED), L"ERROR_ACCESS_DENIED", L"this user may not, or it is a folder"},
    {OfSystem(ERROR_SHARING_VIOLATION), L"ERROR_SHARING_VIOLATION", L"another program holds the file"},
    {OfSystem(ERROR_INVALID_NAME), L"ERROR_INVALID_NAME", L"no file can have this name"},
    {OfSystem(ERROR_FILE_EXISTS), L"ERROR_FILE_EXISTS", L"there is a file of this name"},
    {OfSystem(ERROR_BROKEN_PIPE), L"ERROR_BROKEN_PIPE", L"who read the output has ended"},
    {OfSystem(ERROR_NO_DATA), L"ERROR_NO_DATA", L"who read the output has ended"},
    {OfSystem(ERROR_NOT_ENOUGH_MEMORY), L"ERROR_NOT_ENOUGH_MEMORY", L"there is not enough memory"},
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
    {OfSystem(ERROR_MOD_NOT_FOUND), L"ERROR_MOD_NOT_FOUND", L"there is no such DLL, or one that it needs"},
    {OfSystem(ERROR_PROC_NOT_FOUND), L"ERROR_PROC_NOT_FOUND", L"the DLL lacks a function"},
    {OfSystem(ERROR_BAD_EXE_FORMAT), L"ERROR_BAD_EXE_FORMAT", L"no DLL for 64-bit programs"},
    {OfSystem(ERROR_FILENAME_EXCED_RANGE), L"ERROR_FILENAME_EXCED_RANGE", L"the path is too long"},
    {OfSystem(WAIT_TIMEOUT), L"WAIT_TIMEOUT", L"it took too long"},
    {OfSystem(ERROR_DISK_FULL), L"ERROR_DISK_FULL", L"the disk is full"},
    {static_cast<HRESULT>(MX_E_INPUTEND), L"MX_E_INPUTEND", L"the document ends too early"},
    {static_cast<HRESULT>(MX_E_ENCODING), L"MX_E_ENCODING", L"bytes that are no text in its encoding"},
    {static_cast<HRESULT>(WC_E_WHITESPACE), L"WC_E_WHITESPACE", L"a blank is missing"},
    {static_cast<HRESULT>(WC_E_SEMICOLON), L"WC_E_SEMICOLON", L"a semicolon is missing, as behind \"&amp\""},
    {static_cast<HRESULT>(WC_E_GREATERTHAN), L"WC_E_GREATERTHAN", L"a \">\" is missing"},
    {static_cast<HRESULT>(WC_E_QUOTE), L"WC_E_QUOTE", L"a quotation mark is missing"},
    {static_cast<HRESULT>(WC_E_EQUAL), L"WC_E_EQUAL", L"a \"=\" is missing"},
    {static_cast<HRESULT>(WC_E_LESSTHAN), L"WC_E_LESSTHAN", L"a \"<\" inside a value is to be \"&lt;\""},
    {static_cast<HRESULT>(WC_E_XMLCHARACTER), L"WC_E_XMLCHARACTER", L"a character that XML cannot hold"},
    {static_cast<HRESULT>(WC_E_SYNTAX), L"WC_E_SYNTAX", L"this is no XML"},
    {static_cast<HRESULT>(WC_E_NAME), L"WC_E_NAME", L"no name of an element or attribute"},
    {static_cast<HRESULT>(WC_E_ROOTELEMENT), L"WC_E_ROOTELEMENT", L"there is no root element"},
    {static_cast<HRESULT>(WC_E_ELEMENTMATCH), L"WC_E_ELEMENTMATCH", L"an end tag of another element"},
    {static_cast<HRESULT>(WC_E_UNIQUEATTRIBUTE), L"WC_E_UNIQUEATTRIBUTE", L"an attribute stands twice"},
    {static_cast<HRESULT>(WC_E_ENCNAME), L"WC_E_ENCNAME", L"an encoding that the reader does not know"},
    {static_cast<HRESULT>(WC_E_UNDECLAREDENTITY), L"WC_E_UNDECLAREDENTITY",
     L"an entity that XML does not know"},
    {static_cast<HRESULT>(MX_E_ENCODINGSWITCH), L"MX_E_ENCODINGSWITCH",
     L"its encoding is not the one that it declares"},
    {static_cast<HRESULT>(MX_E_ENCODINGSIGNATURE), L"MX_E_ENCODINGSIGNATURE",
     L"its first bytes are of no encoding that the reader knows"},
    {static_cast<HRESULT>(WC_E_HEXDIGIT), L"WC_E_HEXDIGIT", L"a hexadecimal digit is missing"},
    {static_cast<HRESULT>(WC_E_DIGIT), L"WC_E_DIGIT", L"a digit is missing"},
    {static_cast<HRESULT>(WC_E_LEFTBRACKET), L"WC_E_LEFTBRACKET", L"a \"[\" is missing"},
    {static_cast<HRESULT>(WC_E_LEFTPAREN), L"WC_E_LEFTPAREN", L"a \"(\" is missing"},
    {static_cast<HRESULT>(WC_E_NAMECHARACTER), L"WC_E_NAMECHARACTER", L"a character that no name can hold"},
    {static_cast<HRESULT>(WC_E_CDSECT), L"WC_E_CDSECT", L"a CDATA section begins wrongly"},
    {static_cast<HRESULT>(WC_E_COMMENT), L"WC_E_COMMENT",
     L"a comment with \"--\" in it, or that begins wrongly"},
    {static_cast<HRESULT>(WC_E_TEXTXMLDECL), L"WC_E_TEXTXMLDECL", L"a wrong XML declaration"},
    {static_cast<HRESULT>(WC_E_LEADINGXML), L"WC_E_LEADINGXML",
     L"something stands before the XML declaration"},
    {static_cast<HRESULT>(WC_E_XMLDECL), L"WC_E_XMLDECL", L"a wrong XML declaration"},
    {static_cast<HRESULT>(WC_E_PI), L"WC_E_PI", L"a wrong processing instruction"},
    {static_cast<HRESULT>(WC_E_QUESTIONMARK), L"WC_E_QUESTIONMARK", L"a \"?\" is missing"},
    {static_cast<HRESULT>(WC_E_CDSECTEND), L"WC_E_CDSECTEND", L"a \"]]>\" in a text"},
    {static_cast<HRESULT>(WC_E_MOREDATA), L"WC_E_MOREDATA",
     L"something stands behind the end of the document"},
    {static_cast<HRESULT>(WC_E_INVALIDXMLSPACE), L"WC_E_INVALIDXMLSPACE", L"a wrong value of xml:space"},
    {static_cast<HRESULT>(NC_E_QNAMECHARACTER), L"NC_E_QNAMECHARACTER", L"a character that no name can hold"},
    {static_cast<HRESULT>(NC_E_QNAMECOLON), L"NC_E_QNAMECOLON", L"a name with several \":\""},
    {static_cast<HRESULT>(NC_E_NAMECOLON), L"NC_E_NAMECOLON", L"a \":\" in a name that must not have one"},
    {static_cast<HRESULT>(NC_E_DECLAREDPREFIX), L"NC_E_DECLAREDPREFIX", L"a prefix is declared twice"},
    {static_cast<HRESULT>(NC_E_UNDECLAREDPREFIX), L"NC_E_UNDECLAREDPREFIX", L"a prefix that is not declared"},
    {static_cast<HRESULT>(NC_E_EMPTYURI), L"NC_E_EMPTYURI", L"a prefix is declared without a value"},
    {static_cast<HRESULT>(NC_E_XMLPREFIXRESERVED), L"NC_E_XMLPREFIXRESERVED",
     L"the prefix xml is declared otherwise"},
    {static_cast<HRESULT>(NC_E_XMLNSPREFIXRESERVED), L"NC_E_XMLNSPREFIXRESERVED",
     L"the prefix xmlns is declared"},
    {static_cast<HRESULT>(SC_E_MAXELEMENTDEPTH), L"SC_E_MAXELEMENTDEPTH",
     L"elements stand too deep in one another"},
    {static_cast<HRESULT>(SC_E_MAXENTITYEXPANSION), L"SC_E_MAXENTITYEXPANSION",
     L"too many entities in one another"},
    {OfSystem(ERROR_INVALID_HANDLE), L"ERROR_INVALID_HANDLE",
     L"the handle is not, or no longer, one of an object"},
    {static_cast<HRESULT>(WC_E_DTDPROHIBITED), L"WC_E_DTDPROHIBITED", L"a DOCTYPE is not allowed"},
};

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
