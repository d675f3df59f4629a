#pragma once

#include "standin/platform/ComObject.h"

#include <windows.h>

#include <objidl.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace test {

// A stream over another one, which it takes over, that writes in small pieces: a disk that is slow, full or
// gone in the middle of a file. beforePiece() is called before each piece, and its failure is the writing's.
class PiecewiseStream final : public standin::ComObject<IStream>
{
public:
    PiecewiseStream(IStream* stream, ULONG pieceSize, std::function<HRESULT()> beforePiece)
        : m_stream(stream), m_pieceSize(pieceSize), m_beforePiece(std::move(beforePiece))
    {
    }

    HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG size, ULONG* pWritten) override
    {
        ULONG done = 0;
        HRESULT hr = S_OK;
        while (SUCCEEDED(hr) && done < size) {
            hr = m_beforePiece();
            ULONG written = 0;
            if (SUCCEEDED(hr)) {
                hr = m_stream->Write(static_cast<const BYTE*>(bytes) + done,
                                     std::min(m_pieceSize, size - done), &written);
            }
            done += written;
        }
        if (pWritten) {
            *pWritten = done;
        }
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG size, ULONG* pRead) override
    {
        return m_stream->Read(bytes, size, pRead);
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) override
    {
        return m_stream->Seek(move, origin, pPosition);
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override { return m_stream->SetSize(size); }
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override { return m_stream->Commit(flags); }
    HRESULT STDMETHODCALLTYPE Revert() override { return m_stream->Revert(); }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* pStat, DWORD flags) override
    {
        return m_stream->Stat(pStat, flags);
    }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

private:
    void* FindInterface(REFIID id) noexcept override
    {
        return id == __uuidof(ISequentialStream) ? static_cast<IStream*>(this) : ComObject::FindInterface(id);
    }

    ~PiecewiseStream() override { m_stream->Release(); }

    IStream* m_stream;
    ULONG m_pieceSize;
    std::function<HRESULT()> m_beforePiece;
};

} // namespace test
