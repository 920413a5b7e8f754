#pragma once

#include "common/UserError.h"

namespace kilnova {

/// A demo data file that is missing or does not read as the table it fills.
class DemoDataError : public UserError {
public:
    using UserError::UserError;
};

} // namespace kilnova
