#pragma once

#include "common/UserError.h"

namespace kilnova {

/// A failure of the project database, caught at the command that met it and shown there.
class DatabaseError : public UserError {
public:
    using UserError::UserError;
};

} // namespace kilnova
