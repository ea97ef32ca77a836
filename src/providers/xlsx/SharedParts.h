// The parts of an OPC package that its sheets share: texts and the formats of cells.
#pragma once

#include "providers/workbook/CNumberFormats.h"
#include "providers/workbook/CTextPool.h"
#include "providers/xlsx/COpcPackage.h"

namespace NSTQ::Providers {

/// Appends the text of a rich text (the element that is at its Start) and goes to its End: plain and formatted runs
/// in their order, without the phonetic ones. All spaces are kept, whatever xml:space states. Throws
/// CSourceError.
void ReadRichText(CXmlScanner& xml, std::string& target);

/// Reads the part with the shared strings; of each text as much as the largest field can show. Throws CSourceError.
CTextPool ReadSharedTexts(const COpcPackage& package, const std::string& part);

/// Reads the styles part. Throws CSourceError.
CNumberFormats ReadNumberFormats(const COpcPackage& package, const std::string& part);

} // namespace NSTQ::Providers
