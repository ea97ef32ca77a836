// What the reader and the listing share: creating ADO objects and opening a connection.
#pragma once

#include "platform/ado/Ado.h"

namespace NSTQ::NSTQCore {

/// An object of the class of a ProgID, or null when it cannot be created.
template <class T>
Platform::CComPtr<T> CreateAdoObject(const char* progId) {
    Platform::CLSID clsid{};
    Platform::CComPtr<T> object;
    if (!Platform::Failed(Platform::CLSIDFromProgID(Platform::BstrFromAnsi(progId).Get(), &clsid)))
        Platform::CoCreateInstance(clsid, object);
    return object;
}

/// The object of a pointer. Throws E_POINTER for null.
template <class T>
T& Require(T* object) {
    if (object == nullptr)
        throw Platform::_com_error(Platform::E_POINTER, "an ADO object is missing");
    return *object;
}

/// Opens a source by its connection string (null is an empty one), without separate user and password. Throws
/// E_FAIL for a string with bytes that the ANSI code page does not define: they could be converted to the name of
/// another file.
void OpenConnection(Platform::_Connection& connection, const char* pConnectString);

} // namespace NSTQ::NSTQCore
