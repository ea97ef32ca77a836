#include "providers/zip/CZipReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <utility>

namespace NSTQ::Providers {

CZipReader::CZipReader(IRandomAccess& input, std::string password)
    : m_oInput(input), m_strPassWord(std::move(password)) {
    zip_error_init(&m_oError);
}

CZipReader::~CZipReader() {
    m_pEntry.reset();
    m_pArchive.reset();
    zip_error_fini(&m_oError);
}

zip_int64_t CZipReader::ServeRead(std::span<unsigned char> bytes) noexcept {
    const std::uint64_t left = m_oInput.Size() - m_uPosition;
    const auto wanted = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
    try {
        m_oInput.ReadAt(m_uPosition, wanted);
    } catch (const std::exception&) {
        zip_error_set(&m_oError, ZIP_ER_READ, EIO);
        return -1;
    }
    m_uPosition += wanted.size();
    return static_cast<zip_int64_t>(wanted.size());
}

/// Called by the zip library, through which no exception may pass.
zip_int64_t CZipReader::Serve(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) noexcept {
    auto& reader = *static_cast<CZipReader*>(self);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
    case ZIP_SOURCE_OPEN:
        reader.m_uPosition = 0;
        return 0;
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
        return 0;
    case ZIP_SOURCE_READ:
        return reader.ServeRead({static_cast<unsigned char*>(data), static_cast<std::size_t>(length)});
    case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(reader.m_uPosition);
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&reader.m_oError, data, length);
    case ZIP_SOURCE_SEEK: {
        const zip_int64_t position = zip_source_seek_compute_offset(reader.m_uPosition, reader.m_oInput.Size(), data,
                                                                    length, &reader.m_oError);
        if (position < 0)
            return -1;
        reader.m_uPosition = static_cast<std::uint64_t>(position);
        return 0;
    }
    case ZIP_SOURCE_STAT: {
        auto* status = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &reader.m_oError);
        if (status == nullptr)
            return -1;
        zip_stat_init(status);
        status->size = reader.m_oInput.Size();
        status->valid = ZIP_STAT_SIZE;
        return sizeof *status;
    }
    default:
        zip_error_set(&reader.m_oError, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

bool CZipReader::CanRead(const SZipEntry& entry, std::size_t index) const {
    constexpr zip_uint64_t needed =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    zip_stat_t status;
    zip_stat_init(&status);
    if (zip_stat_index(m_pArchive.get(), index, 0, &status) != 0 || (status.valid & needed) != needed ||
        status.size != entry.size || status.comp_size != entry.packedSize ||
        zip_compression_method_supported(status.comp_method, 0) == 0)
        return false;
    if (!entry.IsEncrypted())
        return status.encryption_method == ZIP_EM_NONE;
    return !m_strPassWord.empty() && status.encryption_method != ZIP_EM_NONE &&
           zip_encryption_method_supported(status.encryption_method, 0) != 0;
}

bool CZipReader::Open(const CZipDirectory& directory) {
    zip_source_t* source = zip_source_function_create(&CZipReader::Serve, this, &m_oError);
    if (source == nullptr)
        return false;
    m_pArchive.reset(zip_open_from_source(source, ZIP_RDONLY, &m_oError));
    if (m_pArchive == nullptr) {
        zip_source_free(source);
        return false;
    }
    const auto& entries = directory.Entries();
    if (std::cmp_not_equal(zip_get_num_entries(m_pArchive.get(), 0), entries.size()))
        return false;
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (!CanRead(entries[i], i))
            return false;
    return true;
}

bool CZipReader::BeginEntry(std::size_t index, zip_flags_t flags) {
    m_pEntry.reset();
    const char* password = m_strPassWord.empty() ? nullptr : m_strPassWord.c_str();
    m_pEntry.reset(zip_fopen_index_encrypted(m_pArchive.get(), index, flags, password));
    return m_pEntry != nullptr;
}

/// The zip library looks at the authentication code only when it is asked for more than the packed data, which its
/// own unpacking never does; and AES entries need not have a checksum.
bool CZipReader::Authenticate(std::size_t index) {
    std::array<std::byte, 16384> block;
    std::size_t count = 0;
    if (!BeginEntry(index, ZIP_FL_COMPRESSED))
        return false;
    do {
        if (!Read(block, count))
            return false;
    } while (count != 0);
    return true;
}

bool CZipReader::OpenEntry(std::size_t index) {
    zip_stat_t status;
    zip_stat_init(&status);
    if (zip_stat_index(m_pArchive.get(), index, 0, &status) != 0)
        return false;
    const bool isAuthenticated =
        status.encryption_method != ZIP_EM_NONE && status.encryption_method != ZIP_EM_TRAD_PKWARE;
    return (!isAuthenticated || Authenticate(index)) && BeginEntry(index, 0);
}

bool CZipReader::Read(std::span<std::byte> bytes, std::size_t& count) {
    const zip_int64_t read = zip_fread(m_pEntry.get(), bytes.data(), bytes.size());
    count = read > 0 ? static_cast<std::size_t>(read) : 0;
    return read >= 0;
}

} // namespace NSTQ::Providers
