#include "proof/CallGate.h"

#include "standin/platform/ImportPatch.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>

// Every import leads here, with its index in r11. Keeps the arguments as they are, and goes on to the
// function that the decision names, or back to the caller with the result of a refused call. The layout is
// GateCall's.
asm(R"(
    .text
    .globl QanhProofGate
QanhProofGate:
    subq $0xA8, %rsp
    movq %rcx, 0x20(%rsp)
    movq %rdx, 0x28(%rsp)
    movq %r8, 0x30(%rsp)
    movq %r9, 0x38(%rsp)
    movq %r11, 0x40(%rsp)
    leaq 0xA8(%rsp), %rax
    movq %rax, 0x48(%rsp)
    movups %xmm0, 0x50(%rsp)
    movups %xmm1, 0x60(%rsp)
    movups %xmm2, 0x70(%rsp)
    movups %xmm3, 0x80(%rsp)
    leaq 0x20(%rsp), %rcx
    call QanhProofDecide
    movq %rax, %r11
    movq 0x20(%rsp), %rcx
    movq 0x28(%rsp), %rdx
    movq 0x30(%rsp), %r8
    movq 0x38(%rsp), %r9
    movups 0x50(%rsp), %xmm0
    movups 0x60(%rsp), %xmm1
    movups 0x70(%rsp), %xmm2
    movups 0x80(%rsp), %xmm3
    movq 0x90(%rsp), %rax
    addq $0xA8, %rsp
    testq %r11, %r11
    je 1f
    jmp *%r11
1:
    ret
)");

extern "C" void QanhProofGate();
extern "C" void* QanhProofDecide(proof::GateCall* call) noexcept;

namespace {

using proof::CallGate;
using proof::Import;

static_assert(offsetof(proof::GateCall, vectors) == 0x30 && offsetof(proof::GateCall, result) == 0x70);

// movabs r11, index; movabs rax, gate; jmp rax
constexpr std::size_t kEntrySize = 32;
constexpr std::size_t kMostImports = 512;

std::vector<Import> g_imports;
BYTE* g_entries = nullptr;
std::atomic<DWORD> g_watchedThread = 0;
std::atomic<const CallGate::Fault*> g_fault = nullptr;
std::set<std::size_t> g_faulty; // indexes of the fault's functions
std::atomic<std::size_t> g_faultyCalls = 0;
std::atomic<bool> g_hasRefused = false;

template <typename Type> Type* At(HMODULE module, ULONGLONG offset)
{
    return reinterpret_cast<Type*>(reinterpret_cast<BYTE*>(module) + offset);
}

void* EntryOf(std::size_t index)
{
    if (!g_entries) {
        g_entries = static_cast<BYTE*>(VirtualAlloc(nullptr, kMostImports * kEntrySize,
                                                    MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    }
    if (!g_entries || index >= kMostImports) {
        throw std::runtime_error("no room for the entries of the gate");
    }
    BYTE* entry = g_entries + index * kEntrySize;
    const ULONGLONG number = index;
    void (*const gate)() = &QanhProofGate;
    const BYTE code[] = {0x49, 0xBB, 0, 0, 0, 0, 0, 0, 0, 0, 0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0};
    std::memcpy(entry, code, sizeof code);
    std::memcpy(entry + 2, &number, sizeof number);
    std::memcpy(entry + 12, &gate, sizeof gate);
    return entry;
}

// The stand-in looks for imports by their names, again and again: one that has led to it once is hidden from
// it, so that it stays below the gate.
void HideName(char* name)
{
    DWORD protection = 0;
    VirtualProtect(name, 1, PAGE_READWRITE, &protection);
    *name = '?';
    VirtualProtect(name, 1, protection, &protection);
}

} // namespace

void* QanhProofDecide(proof::GateCall* call) noexcept
{
    const DWORD error = GetLastError();
    proof::Import& import = g_imports[call->index];
    const CallGate::Fault* const fault = g_fault;
    if (GetCurrentThreadId() == g_watchedThread || (fault && fault->isForEveryThread)) {
        ++std::atomic_ref(import.calls);
        if (fault && g_faulty.contains(call->index)) {
            const std::size_t number = g_faultyCalls++;
            if (number == fault->index || (fault->isLasting && number > fault->index)) {
                SetLastError(error);
                if (const auto result = fault->refusal(*call, import)) {
                    g_hasRefused = true;
                    call->result = *result;
                    return nullptr;
                }
            }
        }
    }
    SetLastError(error);
    return import.function;
}

namespace proof {

void CallGate::Install(HMODULE module, const std::map<std::string, void*>& replacements)
{
    g_imports.clear();
    const auto* dosHeader = At<const IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<const IMAGE_NT_HEADERS>(module, static_cast<ULONGLONG>(dosHeader->e_lfanew));
    const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = At<const IMAGE_IMPORT_DESCRIPTOR>(module, table); library->Name != 0;
         ++library) {
        std::string libraryName = At<const char>(module, library->Name);
        std::transform(libraryName.begin(), libraryName.end(), libraryName.begin(), [](char letter) {
            return 'A' <= letter && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
        });
        const auto* names = At<const ULONGLONG>(module, library->OriginalFirstThunk);
        auto* slots = At<void*>(module, library->FirstThunk);
        for (; *names != 0; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(*names)) {
                throw std::runtime_error("an import without a name from " + libraryName);
            }
            char* name = At<char>(module, *names + offsetof(IMAGE_IMPORT_BY_NAME, Name));
            Import import{libraryName, name, *slots, 0};
            if (const auto replacement = replacements.find(import.name); replacement != replacements.end()) {
                import.function = replacement->second;
            }
            if (import.name == "CreateXmlWriter" || import.name == "SHLoadIndirectString") {
                HideName(name);
            }
            standin::PatchSlot(slots, EntryOf(g_imports.size()));
            g_imports.push_back(import);
        }
    }
}

const std::vector<Import>& CallGate::Imports()
{
    return g_imports;
}

void CallGate::Watch(const Fault* fault)
{
    g_faulty.clear();
    for (std::size_t index = 0; index < g_imports.size(); ++index) {
        g_imports[index].calls = 0;
        if (fault && fault->functions.contains(g_imports[index].name)) {
            g_faulty.insert(index);
        }
    }
    g_fault = fault;
    g_faultyCalls = 0;
    g_hasRefused = false;
    g_watchedThread = GetCurrentThreadId();
}

void CallGate::Ignore()
{
    g_watchedThread = 0;
    g_fault = nullptr;
}

bool CallGate::HasRefused()
{
    return g_hasRefused;
}

} // namespace proof
