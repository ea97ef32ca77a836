// Encrypted packages (xlsx workbooks with a password): a compound file that holds the encrypted bytes and the
// description of their encryption.
#pragma once

#include "providers/common/IRandomAccess.h"
#include "providers/compound/CCompoundFile.h"

#include <memory>
#include <string>

namespace NSTQ::Providers {

/// The package, decrypted where it is read; it may be read after `file` is gone. `passWord` is in the ANSI code page,
/// empty for none. Throws CSourceError: the password is missing or wrong (E_FAIL, the text says which), the file is
/// damaged, or the encryption is of an unknown kind.
std::shared_ptr<IRandomAccess> OpenEncryptedPackage(CCompoundFile& file, const std::string& passWord);

} // namespace NSTQ::Providers
