#pragma once

#include "common/UserError.h"

namespace kilnova {

/// A blend was not stored because its name is taken and the caller did not allow a second record of
/// that name. Nothing was written.
class StoreRefused final : public UserError {
public:
    using UserError::UserError;
};

} // namespace kilnova
