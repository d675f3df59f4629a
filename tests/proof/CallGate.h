#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace proof {

// What the library handed to a function that it imports. The gate's entry writes it: the layout stands there
// too.
struct GateCall
{
    ULONG_PTR arguments[4];
    ULONG_PTR index;        // of the function in CallGate::Imports()
    const ULONG_PTR* stack; // the return address, then room for four arguments, then the fifth and on
    BYTE vectors[4][16];    // the first four floating-point arguments
    ULONG_PTR result;       // when the call is refused

    [[nodiscard]] ULONG_PTR Argument(std::size_t number) const // from 0
    {
        return number < 4 ? arguments[number] : stack[number + 1];
    }
};

// A function of the library's import table.
struct Import
{
    std::string library; // in lower case
    std::string name;
    void* function;    // what is called
    std::size_t calls; // of the watched thread since CallGate::Watch()
};

// Stands in for a call that is to fail: gives the call's result, does to the arguments what such a failure
// does, and sets the last error; or nothing, when this call is not to fail.
using Refusal = std::function<std::optional<ULONG_PTR>(const GateCall& call, const Import& import)>;

// Every function that the library's import table names, called through one place: the calls of one thread are
// counted there, and any of them can be made to fail. That takes no knowledge of a function's arguments:
// their registers and stack are as they were when the function is reached. One library at a time.
class CallGate
{
public:
    // Points the imports of a module, just loaded, at the gate. Functions that are named here are replaced
    // under it.
    static void Install(HMODULE module, const std::map<std::string, void*>& replacements);
    [[nodiscard]] static const std::vector<Import>& Imports();

    // From here on the calling thread's calls are counted, and one of them is refused: that of this index (0
    // is the first) among all calls of these functions, and when it is lasting, all after it. Calls of other
    // threads are neither counted nor refused, unless the fault is for every thread; then the refusal may be
    // asked by some at once.
    struct Fault
    {
        std::set<std::string> functions;
        std::size_t index = 0;
        bool isLasting = false;
        Refusal refusal;
        bool isForEveryThread = false;
    };
    // The fault may be null, and must live until Ignore().
    static void Watch(const Fault* fault);
    static void Ignore();
    // Whether a call was refused since Watch().
    [[nodiscard]] static bool HasRefused();
};

} // namespace proof
