#include "kelmar/base/FObject.h"
#include "kelmar/base/FVariant.h"
#include "kelmar/base/IPtr.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Kelmar {
namespace {

TEST(FVariant, CarriesEachTypeWithItsTypeBit)
{
    EXPECT_EQ(FVariant(int64{7}).getType(), FVariant::kInteger);
    EXPECT_EQ(FVariant(2.5).getType(), FVariant::kFloat);
    EXPECT_EQ(FVariant("lock").getType(), FVariant::kString8);
    EXPECT_EQ(FVariant(u"Montala").getType(), FVariant::kString16);
    EXPECT_EQ(FVariant("lock", true).getType(), FVariant::kString8 | FVariant::kOwner);

    const FVariant number(int64{42});
    EXPECT_EQ(number.getInt(), 42);
    EXPECT_EQ(number.getFloat(), 0.0) << "a reader of the wrong type gets nothing";
    EXPECT_EQ(number.getString8(), nullptr);
}

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

TEST(FObject, AnswersItsOwnIdsAndNamesItsClass)
{
    auto object = owned(new FObject);
    auto dependent = queryInterface<IDependent>(object.get());
    ASSERT_TRUE(dependent);
    EXPECT_EQ(object->getRefCount(), 2u);
    dependent.reset();
    void* answer = reinterpret_cast<void*>(1);
    EXPECT_EQ(object->queryInterface(FUID{"{00000000-0000-0000-0000-000000000001}"}, &answer), kNoInterface);
    EXPECT_EQ(answer, nullptr);
    EXPECT_STREQ(object->isA(), "FObject");
    EXPECT_TRUE(object->isTypeOf("FObject"));
    EXPECT_FALSE(object->isTypeOf("Host"));
}

} // namespace
} // namespace Kelmar
