// One source of the command line: a text, a workbook or database, or a package.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

#include <memory>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CTableSource;
class CTextFile;

class ISource {
public:
    virtual ~ISource() = default;

    /// SFT_UNKNOWN if neither the options nor the name nor the first line determine it.
    virtual SCDeclareConstant::ESourceFileType Type() const = 0;

    /// Opens it for reading; a package is unpacked for that, until the source is destroyed. The source must outlive
    /// the reader. Throws CFailure, also for a source without a reader.
    virtual std::unique_ptr<ISourceReader> OpenReader() = 0;

    /// The text that the rows are in; null for a workbook or database, and for a package that has not been unpacked.
    virtual const CTextFile* Text() const { return nullptr; }
    /// Unpacks a package, so that there is a text, unless that needs a password which nothing gives. Throws CFailure.
    virtual void LookInside() {}

    /// The source as a workbook or database; null when it is none.
    virtual CTableSource* Tables() { return nullptr; }
    /// The names of the columns of what OpenReader has opened, where they stand apart from the rows, as in databases;
    /// else null.
    virtual const std::vector<std::string>* ColumnNames() const { return nullptr; }
};

} // namespace NSTQ::Tool
