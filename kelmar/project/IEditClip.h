#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// What IProjectEdit::extractRange took out of a range, ready to be inserted.
class IEditClip : public FUnknown {
public:
    virtual double getLength() = 0;

    static constexpr FUID iid{"{6913F791-38D1-48D8-A642-B9A35DBBB69F}"};
};

} // namespace Kelmar
