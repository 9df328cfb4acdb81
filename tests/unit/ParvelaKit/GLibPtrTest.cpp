#include <ParvelaKit/GLibPtr.h>

namespace parvela {
namespace {

Ref<GObject> newObject() {
    return Ref<GObject>::adopt(static_cast<GObject*>(g_object_new(G_TYPE_OBJECT, nullptr)));
}

bool isAlive(GWeakRef& weak) {
    return static_cast<bool>(Ref<GObject>::adopt(static_cast<GObject*>(g_weak_ref_get(&weak))));
}

TEST(GLibPtr, refsCountOwnersThroughCopiesMovesAndAssignments) {
    auto first = newObject();
    GWeakRef weak;
    g_weak_ref_init(&weak, first.get());

    auto second = first;
    auto third = Ref<GObject>::ref(first.get());
    EXPECT_EQ(first.get()->ref_count, 3U);
    second = std::move(third);
    EXPECT_EQ(first.get()->ref_count, 2U);
    const auto& itself = second;
    second = itself;
    first = nullptr;
    EXPECT_TRUE(isAlive(weak));
    second = newObject();
    EXPECT_FALSE(isAlive(weak));

    const auto floating = Ref<GObject>::sink(static_cast<GObject*>(g_object_new(G_TYPE_INITIALLY_UNOWNED, nullptr)));
    EXPECT_FALSE(g_object_is_floating(floating.get()));
    EXPECT_EQ(floating.get()->ref_count, 1U);
    g_weak_ref_clear(&weak);
}

TEST(GLibPtr, anOutParameterReplacesWhatWasHeld) {
    ErrorPtr error(g_error_new_literal(G_FILE_ERROR, G_FILE_ERROR_NOENT, "gone"));
    g_set_error_literal(error.out(), G_FILE_ERROR, G_FILE_ERROR_ACCES, "denied");
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->message, "denied");
    const ErrorPtr moved = std::move(error);
    EXPECT_FALSE(error);
    EXPECT_STREQ(moved->message, "denied");
}

TEST(GLibPtr, aConnectionEndsWithItsOwnerAndOutlivesItsObject) {
    auto object = newObject();
    auto witness = std::make_shared<int>(0);
    const auto count = [witness](GObject*, GParamSpec*) { ++*witness; };
    using Notify = void(GObject*, GParamSpec*);

    auto survivor = connect<Notify>(object.get(), "notify", count);
    {
        const auto scoped = connect<Notify>(object.get(), "notify", count);
        g_signal_emit_by_name(object.get(), "notify", nullptr);
        EXPECT_EQ(*witness, 2);
    }
    g_signal_emit_by_name(object.get(), "notify", nullptr);
    EXPECT_EQ(*witness, 3);

    survivor = connect<Notify>(object.get(), "notify", count);
    g_signal_emit_by_name(object.get(), "notify", nullptr);
    EXPECT_EQ(*witness, 4);

    object = nullptr;
    EXPECT_EQ(witness.use_count(), 2) << "closures go with the object; only the local handler still shares the counter";
    survivor.disconnect();
}

}  // namespace
}  // namespace parvela
