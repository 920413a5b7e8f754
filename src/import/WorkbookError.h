#pragma once

#include "common/UserError.h"

namespace kilnova {

/// A workbook that cannot be read as asked: damaged, protected, of an unknown kind, or without the
/// worksheet or range named. The message completes "The workbook X cannot be read: ...".
class WorkbookError : public UserError {
public:
    using UserError::UserError;
};

} // namespace kilnova
