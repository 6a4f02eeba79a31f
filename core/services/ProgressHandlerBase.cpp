#include "core/services/ProgressHandlerBase.h"

namespace montala::core {

// Out of line, so that the class's virtual table lives in one object file.
ProgressHandlerBase::~ProgressHandlerBase() = default;

} // namespace montala::core
