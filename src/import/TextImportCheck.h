#pragma once

#include "import/ImportTarget.h"
#include "import/ImportWarnings.h"
#include "import/TextImporter.h"

#include <QString>

#include <optional>
#include <vector>

class QIODevice;

namespace kilnova {

/// Reads a fixed-column file as the text import will, before anything is written, and tells what the
/// import itself would not: the number fields that are not plain numbers (see ImportWarnings), and
/// whether the lines fit the layout at all. A file fits badly when on more than half of its lines
/// most of the non-blank number fields hold no plain number, or a text field holds a number where
/// the layout puts a name: a Name with a decimal point, or any number as a stockpile's Source
/// ("512408.2": a blast file read as stockpiles).
class TextImportCheck final {
public:
    struct Inspection {
        ImportWarnings warnings;
        /// Why the lines do not fit the layout, for the user; nothing when they fit.
        std::optional<QString> layoutProblem;
        /// Complete lines read.
        long lines = 0;
    };

    TextImportCheck(const TextImporter& importer, ImportTarget target);

    /// Reads complete lines from the device's current position, at most maxLines of them when it
    /// is above 0. The device is read ahead of the lines inspected: seek before reading it again.
    Inspection inspect(QIODevice& device, long maxLines = 0) const;

private:
    /// Counts over the lines for the layout verdict.
    struct Layout {
        long misfitLines = 0;
        long firstMisfit = 0;
        QString misfitField;
        QString misfitText;
        long numberInTextLines = 0;
        long firstNumberInText = 0;
        QString textField;
        QString textNumber;
    };
    void inspectLine(const char* line, long number, Inspection& seen, Layout& fit) const;
    std::optional<QString> layoutProblem(const Layout& fit, long lines) const;

    std::vector<TextImporter::ReadField> mFields;
    ImportTarget mTarget;
};

} // namespace kilnova
