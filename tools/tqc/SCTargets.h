// The names of the outputs, checked before anything is written to them: no two are the same, and none is an input.
#pragma once

#include "SOptions.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

namespace NSTQ::Tool {

/// The output of an input in a folder: a file, or a folder for its sheets or tables.
struct STarget {
    std::string path; ///< of a folder with its '/'
    bool isRenamed;   ///< the name differs from that of the input
};

class SCTargets {
public:
    /// The extension of the outputs in a folder, such as ".csv", by their format.
    static std::string Extension(const SOptions& options);

    /// For each input a file in the folder that the options name: the input's name with the extension of the outputs.
    static std::vector<STarget> FilesInFolder(const SOptions& options);

    /// The same where several tables may be selected, which is known of an input only when it is open: first a file
    /// for each input, then a folder for each, which is that of the options if there is only one input. The names are
    /// valid and unique (see SCFileNames).
    static std::vector<STarget> FilesAndFolders(const SOptions& options);

    /// Throws CFailure if an input does not exist or access is denied.
    static void CheckInputs(const SOptions& options);
};

/// The files that are inputs or outputs. Several threads may use it.
class CTakenTargets {
public:
    /// The inputs and the file for rejected rows. Throws CFailure when that is an input.
    explicit CTakenTargets(const SOptions& options);

    /// Takes the target for the output of `subject`. Throws CFailure, with what to do, when it is an input or the
    /// target of another output.
    void Take(const std::string& target, const std::string& subject);

private:
    /// Device and number of a file; or those of a folder, with the name of a file in it.
    using CIdentity = std::tuple<std::uint64_t, std::uint64_t, std::string>;

    static std::vector<CIdentity> Identify(const std::string& name);

    std::mutex m_mutex;
    std::map<CIdentity, std::string> m_inputs;
    std::map<CIdentity, std::string> m_outputs;
    std::string m_rejects; ///< the file for rejected rows; empty for none
    bool m_isInPlace;      ///< a single input, which may replace itself
};

} // namespace NSTQ::Tool
