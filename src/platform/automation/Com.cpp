#include "platform/automation/Com.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <new>

namespace NSTQ::Platform {

namespace {

constinit thread_local DWORD comInitCount = 0;

/// Registrations are numbered from here on, built-in classes from 1.
constexpr DWORD firstRegisteredId = 0x10000;
constinit DWORD nextRegisteredId = firstRegisteredId;
constinit CClassRegistration* newestRegistration = nullptr;

} // namespace

HRESULT CoInitialize(void* reserved) {
    if (reserved != nullptr)
        return E_INVALIDARG;
    return ++comInitCount == 1 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    if (comInitCount != 0)
        --comInitCount;
}

DWORD GetComInitCount() {
    return comInitCount;
}

/// The order of lookups in the registry: the newest registration first, the built-in classes last.
struct SClassRegistry {
    static DWORD FindId(std::u16string_view progId) {
        for (const CClassRegistration* entry = newestRegistration; entry != nullptr; entry = entry->m_older) {
            if (IsEqualIgnoringCase(entry->m_progId, progId))
                return entry->m_id;
        }
        const auto classes = GetBuiltinClasses();
        const auto found = std::ranges::find_if(
            classes, [&](const SBuiltinClass& entry) { return IsEqualIgnoringCase(entry.progId, progId); });
        return found == classes.end() ? 0 : static_cast<DWORD>(found - classes.begin()) + 1;
    }

    /// Null from `Create` means that there is no such class; a class that returns no object throws E_FAIL.
    static CComPtr<IUnknown> Create(DWORD id) {
        const auto classes = GetBuiltinClasses();
        if (id != 0 && id <= classes.size())
            return Required(classes[id - 1].create());
        for (const CClassRegistration* entry = newestRegistration; entry != nullptr; entry = entry->m_older) {
            if (entry->m_id == id)
                return Required(entry->m_create());
        }
        return nullptr;
    }

    static CComPtr<IUnknown> Required(CComPtr<IUnknown> object) {
        if (!object)
            throw _com_error(E_FAIL);
        return object;
    }
};

CClassRegistration::CClassRegistration(std::u16string_view progId, FCreateObject create)
    : m_progId(progId), m_create(std::move(create)), m_id(nextRegisteredId++), m_older(newestRegistration) {
    newestRegistration = this;
}

CClassRegistration::~CClassRegistration() {
    newestRegistration = m_older;
}

HRESULT CLSIDFromProgID(const WCHAR* progId, CLSID* clsid) {
    if (progId == nullptr || clsid == nullptr)
        return E_INVALIDARG;
    *clsid = {SClassRegistry::FindId(progId)};
    return clsid->id == 0 ? CO_E_CLASSSTRING : S_OK;
}

HRESULT CoCreateInstance(CLSID clsid, IUnknown** object) {
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (comInitCount == 0)
        return CO_E_NOTINITIALIZED;
    try {
        const CComPtr<IUnknown> created = SClassRegistry::Create(clsid.id);
        if (!created)
            return REGDB_E_CLASSNOTREG;
        created->AddRef();
        *object = created.Get();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace NSTQ::Platform
