#pragma once

#include "support/DocumentedReader.h"
#include "support/ImportPatch.h"

namespace test {

// Lets the library read with readers of that kind, until the end of the scope.
class DocumentedReaderInstead
{
private:
    using Create = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);

    ImportPatch<Create> m_patch{"CreateXmlReader", [](REFIID iid, void** reader, IMalloc*) -> HRESULT {
                                    return standin::CreateComObject<DocumentedReader>(iid, reader);
                                }};
};

} // namespace test
