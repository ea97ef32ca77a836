#include "providers/zip/CLibZipReader.h"

#include "platform/errors/LastError.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <utility>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The second version of AES entries leaves the checksum to the authentication code.
bool HasChecksum(const SZipEntry& entry) {
    constexpr std::uint16_t secondVersion = 2;
    return entry.aesVersion != secondVersion;
}

/// Older releases of libzip verify the checksum of such an entry nevertheless, and with a stored entry that looks
/// like a wrong authentication code; so another method is presented to them, and they return the content as
/// compressed data, which has no checksum.
bool IsShownAsPacked(const SZipEntry& entry) {
    return !HasChecksum(entry) && entry.aesMethod == ZIP_CM_STORE;
}

} // namespace

CLibZipReader::CLibZipReader(IRandomAccess& input, std::string password)
    : m_input(input), m_passWord(std::move(password)) {
    zip_error_init(&m_error);
}

CLibZipReader::~CLibZipReader() {
    m_entry.reset();
    m_archive.reset();
    zip_error_fini(&m_error);
}

zip_int64_t CLibZipReader::ServeRead(std::span<unsigned char> bytes) noexcept {
    const std::uint64_t left = m_input.Size() - m_position;
    const auto wanted = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
    try {
        m_input.ReadAt(m_position, wanted);
    } catch (const std::exception&) {
        zip_error_set(&m_error, ZIP_ER_READ, EIO);
        return -1;
    }
    HideMethods(wanted);
    m_position += wanted.size();
    return static_cast<zip_int64_t>(wanted.size());
}

/// `bytes` are those at the position of the next read. The second byte of the number is 0 for both methods.
void CLibZipReader::HideMethods(std::span<unsigned char> bytes) const {
    auto next = std::lower_bound(m_hiddenMethods.begin(), m_hiddenMethods.end(), m_position);
    for (; next != m_hiddenMethods.end() && *next - m_position < bytes.size(); ++next)
        bytes[static_cast<std::size_t>(*next - m_position)] = ZIP_CM_DEFLATE;
}

/// Called by libzip, through which no exception may pass.
zip_int64_t CLibZipReader::Serve(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) noexcept {
    auto& reader = *static_cast<CLibZipReader*>(self);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
    case ZIP_SOURCE_OPEN:
        reader.m_position = 0;
        return 0;
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
        return 0;
    case ZIP_SOURCE_READ:
        return reader.ServeRead({static_cast<unsigned char*>(data), static_cast<std::size_t>(length)});
    case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(reader.m_position);
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&reader.m_error, data, length);
    case ZIP_SOURCE_SEEK: {
        const zip_int64_t position =
            zip_source_seek_compute_offset(reader.m_position, reader.m_input.Size(), data, length, &reader.m_error);
        if (position < 0)
            return -1;
        reader.m_position = static_cast<std::uint64_t>(position);
        return 0;
    }
    case ZIP_SOURCE_STAT: {
        auto* status = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &reader.m_error);
        if (status == nullptr)
            return -1;
        zip_stat_init(status);
        status->size = reader.m_input.Size();
        status->valid = ZIP_STAT_SIZE;
        return sizeof *status;
    }
    default:
        zip_error_set(&reader.m_error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

bool CLibZipReader::CanRead(const SZipEntry& entry, std::size_t index) const {
    constexpr zip_uint64_t needed =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    zip_stat_t status;
    zip_stat_init(&status);
    if (zip_stat_index(m_archive.get(), index, 0, &status) != 0 || (status.valid & needed) != needed ||
        status.size != entry.size || status.comp_size != entry.packedSize ||
        entry.IsEncrypted() != (status.encryption_method != ZIP_EM_NONE))
        return FailWith(ERROR_FILE_CORRUPT);
    if (zip_compression_method_supported(status.comp_method, 0) == 0 ||
        zip_encryption_method_supported(status.encryption_method, 0) == 0)
        return FailWith(ERROR_NOT_SUPPORTED);
    return !entry.IsEncrypted() || !m_passWord.empty() || FailWith(ERROR_INVALID_PASSWORD);
}

/// Traditional encryption accepts one of 256 wrong passwords, and then cannot distinguish it from damage.
bool CLibZipReader::FailAsDamaged() const {
    const bool isUnclear = m_current->IsEncrypted() && m_current->aesVersion == 0;
    return FailWith(isUnclear ? ERROR_CRC : ERROR_FILE_CORRUPT);
}

bool CLibZipReader::FailFromZip(const zip_error_t* error) const {
    switch (zip_error_code_zip(error)) {
    case ZIP_ER_NOPASSWD:
    case ZIP_ER_WRONGPASSWD:
        return FailWith(ERROR_INVALID_PASSWORD);
    case ZIP_ER_READ:
        return FailWith(ERROR_IO_DEVICE);
    case ZIP_ER_MEMORY:
        return FailWith(ERROR_NOT_ENOUGH_MEMORY);
    default:
        return FailAsDamaged();
    }
}

bool CLibZipReader::Open(const CZipDirectory& directory) {
    zip_source_t* source = zip_source_function_create(&CLibZipReader::Serve, this, &m_error);
    if (source == nullptr)
        return FailWith(ERROR_NOT_ENOUGH_MEMORY);
    m_entries = directory.Entries();
    for (const SZipEntry& entry : m_entries)
        if (IsShownAsPacked(entry))
            m_hiddenMethods.push_back(entry.aesMethodPosition);
    m_archive.reset(zip_open_from_source(source, ZIP_RDONLY, &m_error));
    if (m_archive == nullptr) {
        zip_source_free(source);
        return FailWith(ERROR_FILE_CORRUPT);
    }
    if (std::cmp_not_equal(zip_get_num_entries(m_archive.get(), 0), m_entries.size()))
        return FailWith(ERROR_FILE_CORRUPT);
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        if (!CanRead(m_entries[i], i))
            return false;
    return true;
}

bool CLibZipReader::BeginEntry(std::size_t index, zip_flags_t flags) {
    m_entry.reset();
    const char* password = m_passWord.empty() ? nullptr : m_passWord.c_str();
    m_entry.reset(zip_fopen_index_encrypted(m_archive.get(), index, flags, password));
    return m_entry != nullptr || FailFromZip(zip_get_error(m_archive.get()));
}

/// libzip verifies the authentication code only when more than the compressed data is requested, which its own
/// decompression never does; and AES entries need not have a checksum.
bool CLibZipReader::Authenticate(std::size_t index) {
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

bool CLibZipReader::OpenEntry(std::size_t index) {
    m_current = &m_entries[index];
    m_isChecksumIdle = false;
    if (m_current->aesVersion != 0 && !Authenticate(index))
        return false;
    m_isChecksumIdle = !HasChecksum(*m_current);
    return BeginEntry(index, IsShownAsPacked(*m_current) ? ZIP_FL_COMPRESSED : 0);
}

bool CLibZipReader::Read(std::span<std::byte> bytes, std::size_t& count) {
    const zip_int64_t read = zip_fread(m_entry.get(), bytes.data(), bytes.size());
    count = read > 0 ? static_cast<std::size_t>(read) : 0;
    const zip_error_t* const error = zip_file_get_error(m_entry.get());
    return read >= 0 || (m_isChecksumIdle && zip_error_code_zip(error) == ZIP_ER_CRC) || FailFromZip(error);
}

} // namespace NSTQ::Providers
