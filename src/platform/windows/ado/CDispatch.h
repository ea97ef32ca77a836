// CDispatch: an object of the system whose properties and methods are called by their names.
//
// Every failure is thrown as _com_error: with the HRESULT and the description that the object gives for it, or that
// of the call itself and a description of ours.
#pragma once

#include "platform/windows/ado/SystemOle.h"

#include <cstdint>
#include <initializer_list>
#include <string>

namespace NSTQ::Platform {

/// A property or method. Its number is asked once, of the first object that it is used with: all that it is used with
/// must be of the same class.
class CMember {
public:
    /// `name` must outlive it.
    explicit CMember(const wchar_t* name) : m_name(name) {}

    DISPID GetId(::IDispatch& object);
    /// "ADO's NAME failed"
    std::string DescribeFailure() const;

private:
    const wchar_t* m_name;
    DISPID m_id = DISPID_UNKNOWN;
};

class CDispatch {
public:
    CDispatch() = default;
    /// Takes over the reference.
    explicit CDispatch(::IDispatch* object) : m_object(object) {}
    CDispatch(CDispatch&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    CDispatch& operator=(CDispatch&& other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~CDispatch() {
        if (m_object != nullptr)
            m_object->Release();
    }

    /// A new object of a class of the system, in an apartment.
    static CDispatch Create(const wchar_t* progId);

    explicit operator bool() const { return m_object != nullptr; }
    ::IDispatch* Get() const { return m_object; }

    /// Stores a property, with arguments if it has any, in `result`.
    void Read(CMember& property, CSystemVariant& result, std::initializer_list<CArgument> arguments = {}) const;
    /// A property that is a whole number or a boolean, in any type. Throws DISP_E_TYPEMISMATCH for another one.
    std::int64_t ReadNumber(CMember& property) const;
    std::u16string ReadText(CMember& property) const;
    CDispatch ReadObject(CMember& property, std::initializer_list<CArgument> arguments = {}) const;
    void Write(CMember& property, const CArgument& value) const;
    void Call(CMember& method, std::initializer_list<CArgument> arguments = {}) const;
    /// Of a method that returns an object.
    CDispatch CallForObject(CMember& method, std::initializer_list<CArgument> arguments) const;

private:
    void Invoke(CMember& member, WORD kind, const CArgument* arguments, std::size_t count, ::VARIANT* result) const;

    ::IDispatch* m_object = nullptr;
};

} // namespace NSTQ::Platform
