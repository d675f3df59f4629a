#include "support/ImportPatch.h"

#include "standin/platform/ImportPatch.h"

#include <stdexcept>
#include <string>

namespace test {

ImportPatchBase::ImportPatchBase(const char* function, void* replacement)
    : m_function(function),
      m_original(standin::PatchImport(GetModuleHandleW(nullptr), {nullptr, function, replacement}))
{
    if (!m_original) {
        throw std::logic_error(std::string("not imported by this program: ") + function);
    }
}

ImportPatchBase::~ImportPatchBase()
{
    standin::PatchImport(GetModuleHandleW(nullptr), {nullptr, m_function, m_original});
}

} // namespace test
