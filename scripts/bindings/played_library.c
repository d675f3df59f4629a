/* The library's functions, played, for the C# binding: they write down how they are called, and do as they
   are told. A library of the machine that runs the check; texts are UTF-16, as Windows has them. */

#include <stdint.h>

typedef int32_t HRESULT;
typedef int32_t BOOL;
typedef uint32_t DWORD;
typedef uint16_t Char;

static Char record[4096];
static int length;
static HRESULT result;
static BOOL answer;
static Char* name;

static void AddCharacter(Char character)
{
    if (length < 4095) {
        record[length++] = character;
    }
    record[length] = 0;
}

static void Add(const char* text)
{
    while (*text) {
        AddCharacter((Char)*text++);
    }
}

static void AddText(const Char* text)
{
    if (!text) {
        Add("null");
        return;
    }
    AddCharacter('"');
    while (*text) {
        AddCharacter(*text++);
    }
    AddCharacter('"');
}

static void AddNumber(DWORD number)
{
    if (number > 9) {
        AddNumber(number / 10);
    }
    AddCharacter((Char)('0' + number % 10));
}

/* What the functions return and hand out from now on; forgets what was written down. */
void PlayedTell(HRESULT newResult, BOOL newAnswer, Char* newName)
{
    result = newResult;
    answer = newAnswer;
    name = newName;
    length = 0;
    record[0] = 0;
}

/* How they were called since: "QanhFinalize();". */
const Char* PlayedRecord(void)
{
    return record;
}

HRESULT QanhInitialize(void)
{
    Add("QanhInitialize();");
    return result;
}

void QanhFinalize(void)
{
    Add("QanhFinalize();");
}

void QanhReleaseString(Char* str)
{
    Add(str == name ? "QanhReleaseString(name);" : "QanhReleaseString(another);");
}

static HRESULT Ask(const char* function, const Char* text, BOOL* isInstalled)
{
    Add(function);
    AddText(text);
    AddCharacter(',');
    AddNumber((DWORD)*isInstalled);
    Add(");");
    *isInstalled = answer;
    return result;
}

HRESULT QanhIsInstalled(const Char* packageName, BOOL* pIsInstalled)
{
    return Ask("QanhIsInstalled(", packageName, pIsInstalled);
}

HRESULT QanhIsInstalledByAppUserModeID(const Char* appUserModelId, BOOL* pIsInstalled)
{
    return Ask("QanhIsInstalledByAppUserModeID(", appUserModelId, pIsInstalled);
}

HRESULT QanhGetAppDisplayNameByPFN(const Char* packageFamilyName, Char** ppDisplayName)
{
    Add("QanhGetAppDisplayNameByPFN(");
    AddText(packageFamilyName);
    Add(*ppDisplayName ? ",a pointer);" : ",null);");
    *ppDisplayName = name;
    return result;
}

/* What both launches by search end with. */
static HRESULT AddSearch(DWORD searchMode, BOOL useExcludeList)
{
    AddCharacter(',');
    AddNumber(searchMode);
    AddCharacter(',');
    AddNumber((DWORD)useExcludeList);
    Add(");");
    return result;
}

HRESULT QanhLaunchBySearch(const Char* appName, DWORD searchMode, BOOL useExcludeList)
{
    Add("QanhLaunchBySearch(");
    AddText(appName);
    return AddSearch(searchMode, useExcludeList);
}

HRESULT QanhLaunchIEBySearch(DWORD tileMode, DWORD searchMode, BOOL useExcludeList)
{
    Add("QanhLaunchIEBySearch(");
    AddNumber(tileMode);
    return AddSearch(searchMode, useExcludeList);
}

HRESULT QanhLaunchByManager(const Char* appUserModelId, const Char* arguments)
{
    Add("QanhLaunchByManager(");
    AddText(appUserModelId);
    AddCharacter(',');
    AddText(arguments);
    Add(");");
    return result;
}
