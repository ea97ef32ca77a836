// COM as far as the readers need it: a count of initialisations for each thread, reference-counted objects, and a
// registry that turns a ProgID into an object.
//
//     CoInitialize(nullptr);
//     CLSID clsid{};
//     CComPtr<_Connection> connection;
//     if (!Failed(CLSIDFromProgID(progId, &clsid)))
//         CoCreateInstance(clsid, connection);                 // stays null on failure
//     connection->Open(...);                                   // raises E_POINTER when it is null
//     connection = nullptr;                                    // before the apartment is left
//     CoUninitialize();
//
// Objects belong to the thread that created them; their counts are not atomic.
#pragma once

#include "tqcAccess/ComError.h"

#include <concepts>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace NSTQ::Platform {

inline constexpr HRESULT E_NOINTERFACE = MakeHresult(0x80004002);
inline constexpr HRESULT CO_E_NOTINITIALIZED = MakeHresult(0x800401F0);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MakeHresult(0x80040154); ///< the class was removed from the registry

/// Enters the single-threaded apartment of the calling thread: S_OK the first time, S_FALSE when the thread is in it
/// already. Each successful call needs one CoUninitialize. E_INVALIDARG when `reserved` is not null.
HRESULT CoInitialize(void* reserved);
/// Undoes one CoInitialize of the calling thread; a surplus call changes nothing.
void CoUninitialize();
/// How many CoInitialize calls of the calling thread are not undone.
DWORD GetComInitCount();

/// Keeps the calling thread in its apartment during its lifetime. Must be destroyed by the thread that created it.
class CComApartment {
public:
    CComApartment() { CoInitialize(nullptr); }
    CComApartment(const CComApartment&) = delete;
    CComApartment& operator=(const CComApartment&) = delete;
    ~CComApartment() { CoUninitialize(); }
};

/// The base of every object. Both return the new count; at 0 the object is destroyed.
class IUnknown {
public:
    virtual DWORD AddRef() = 0;
    virtual DWORD Release() = 0;

protected:
    ~IUnknown() = default;
};

/// A counted reference. Access through a null one throws _com_error with E_POINTER.
template <class T>
class CComPtr {
public:
    CComPtr() = default;
    CComPtr(std::nullptr_t) {}
    CComPtr(T* object) : m_p(object) {
        if (m_p != nullptr)
            m_p->AddRef();
    }
    CComPtr(const CComPtr& other) : CComPtr(other.m_p) {}
    CComPtr(CComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    /// From a reference to something that is a T.
    template <class U>
    requires std::convertible_to<U*, T*> CComPtr(const CComPtr<U>& other) : CComPtr(static_cast<T*>(other.Get())) {}
    CComPtr& operator=(CComPtr other) noexcept {
        std::swap(m_p, other.m_p);
        return *this;
    }
    ~CComPtr() {
        if (m_p != nullptr)
            m_p->Release();
    }

    T* Get() const { return m_p; }
    T* operator->() const {
        if (m_p == nullptr)
            throw _com_error(E_POINTER);
        return m_p;
    }
    explicit operator bool() const { return m_p != nullptr; }

private:
    T* m_p = nullptr;
};

/// The count of an interface: `class CField : public CComObject<Field>`. Made with MakeComObject, destroyed by
/// the last Release.
template <class TInterface>
class CComObject : public TInterface {
public:
    CComObject(const CComObject&) = delete;
    CComObject& operator=(const CComObject&) = delete;

    DWORD AddRef() final { return ++m_count; }
    DWORD Release() final {
        const DWORD count = --m_count;
        if (count == 0)
            delete this;
        return count;
    }

protected:
    CComObject() = default;
    virtual ~CComObject() = default;

private:
    DWORD m_count = 0;
};

/// A new T with one reference. Throws std::bad_alloc, or what T's constructor throws.
template <class T, class... TArguments>
CComPtr<T> MakeComObject(TArguments&&... arguments) {
    return CComPtr<T>(new T(std::forward<TArguments>(arguments)...));
}

/// Makes an object of a class. May raise _com_error or std::bad_alloc.
using FCreateObject = std::function<CComPtr<IUnknown>()>;

/// Registers a class for a ProgID during its lifetime, with precedence over a built-in class or an older registration
/// of the same ProgID. Create and destroy them, in reverse order, while no other thread uses the functions below.
class CClassRegistration {
public:
    CClassRegistration(std::u16string_view progId, FCreateObject create);
    CClassRegistration(const CClassRegistration&) = delete;
    CClassRegistration& operator=(const CClassRegistration&) = delete;
    ~CClassRegistration();

private:
    friend struct SClassRegistry;
    std::u16string m_progId;
    FCreateObject m_create;
    DWORD m_id;
    CClassRegistration* m_older;
};

/// A built-in class.
struct SBuiltinClass {
    std::u16string_view progId;
    CComPtr<IUnknown> (*create)();
};

/// The built-in classes. Defined by the layer that has them (ADO), so that they need no initialisation and this layer
/// does not depend on that one. Always the same table.
std::span<const SBuiltinClass> GetBuiltinClasses();

/// Identifies a class of the registry; 0 means none.
struct CLSID {
    DWORD id;
};

/// Looks up a ProgID, ignoring the case of ASCII letters. CO_E_CLASSSTRING for an unknown one, E_INVALIDARG
/// for a null argument.
HRESULT CLSIDFromProgID(const WCHAR* progId, CLSID* clsid);

/// Creates an object and stores it in `*object`, with a reference for the caller. On failure `*object` is null:
/// CO_E_NOTINITIALIZED outside an apartment, REGDB_E_CLASSNOTREG, E_POINTER for a null argument, the HRESULT that the
/// class throws, E_OUTOFMEMORY, E_FAIL when the class returns no object. Throws nothing.
HRESULT CoCreateInstance(CLSID clsid, IUnknown** object);

/// The same for one interface; E_NOINTERFACE when the object does not have it.
template <class T>
HRESULT CoCreateInstance(CLSID clsid, CComPtr<T>& object) {
    object = nullptr;
    IUnknown* created = nullptr;
    const HRESULT result = CoCreateInstance(clsid, &created);
    if (Failed(result))
        return result;
    object = CComPtr<T>(dynamic_cast<T*>(created));
    created->Release();
    return object ? result : E_NOINTERFACE;
}

} // namespace NSTQ::Platform
