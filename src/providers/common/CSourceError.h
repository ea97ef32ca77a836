// The exception for damaged files within a provider. It never leaves the provider: at each entry from outside,
// RaiseAsComError converts it to a _com_error with the name of the file.
#pragma once

#include "tqcAccess/ComError.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace NSTQ::Providers {

class CSourceError : public std::runtime_error {
public:
    /// `found` describes the problem and its place in the file, in ASCII or the ANSI code page.
    explicit CSourceError(const std::string& found, Platform::HRESULT hr = Platform::E_FAIL)
        : std::runtime_error(found), m_hr(hr) {}

    Platform::HRESULT Error() const { return m_hr; }

private:
    Platform::HRESULT m_hr;
};

/// The file is encrypted and its password missing or wrong; becomes a Platform::CPassWordError.
class CPassWordRefused : public CSourceError {
public:
    using CSourceError::CSourceError;
};

/// A name from a file for a description: truncated to a moderate length, '?' for everything but printable ASCII.
inline std::string PrintableName(std::string_view name) {
    std::string printable(name.substr(0, 100));
    for (char& character : printable) {
        if (character < ' ' || character > '~')
            character = '?';
    }
    return printable;
}

/// Runs `work`; a CSourceError becomes a _com_error that names the file at `path`.
template <class TWork>
decltype(auto) RaiseAsComError(const std::string& path, TWork&& work) {
    try {
        return std::forward<TWork>(work)();
    } catch (const CPassWordRefused& error) {
        throw Platform::CPassWordError(error.Error(), path + ": " + error.what());
    } catch (const CSourceError& error) {
        throw Platform::_com_error(error.Error(), path + ": " + error.what());
    }
}

} // namespace NSTQ::Providers
