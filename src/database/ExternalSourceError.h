#pragma once

#include "common/UserError.h"

namespace kilnova {

/// An external data source that cannot be opened or read as the Actual refresh expects; the
/// message says which and that nothing was changed.
class ExternalSourceError : public UserError {
public:
    using UserError::UserError;
};

} // namespace kilnova
