#include "kelmar/base/FObject.h"
#include "kelmar/base/FVariant.h"
#include "kelmar/base/IPtr.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Kelmar {
namespace {

TEST(FVariant, AnOwnedStringIsACopyThatEachCopyOwnsOnItsOwn)
{
    char text[] = "Reel 1";
    FVariant owner(text, true);
    text[0] = 'X';
    EXPECT_STREQ(owner.getString8(), "Reel 1");

    FVariant copy = owner;
    EXPECT_NE(copy.getString8(), owner.getString8());
    owner.empty();
    EXPECT_TRUE(owner.isEmpty());
    EXPECT_STREQ(copy.getString8(), "Reel 1");

    FVariant borrowed(text);
    EXPECT_EQ(borrowed.getString8(), text) << "a borrowed string is not copied";
}

TEST(FVariant, AnOwnedObjectHoldsAReferenceUntilEmptied)
{
    auto object = owned(new FObject);
    {
        FVariant value(static_cast<FUnknown*>(object.get()), true);
        EXPECT_EQ(object->getRefCount(), 2u);
        FVariant copy = value;
        EXPECT_EQ(object->getRefCount(), 3u);
        FVariant moved = std::move(copy);
        EXPECT_EQ(object->getRefCount(), 3u);
        EXPECT_TRUE(copy.isEmpty());
    }
    EXPECT_EQ(object->getRefCount(), 1u);

    FVariant borrowed(static_cast<FUnknown*>(object.get()));
    EXPECT_EQ(object->getRefCount(), 1u);
}

} // namespace
} // namespace Kelmar
