#pragma once
#include <new>

#include <windows.h>

namespace corvan::com {

// Runs the body of a COM method: no exception may leave one, so whatever
// escapes the body's own traps becomes an HRESULT here.
template <typename Body>
HRESULT Guarded(Body&& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace corvan::com
