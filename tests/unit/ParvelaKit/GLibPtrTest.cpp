#include <ParvelaKit/GLibPtr.h>

namespace parvela {
namespace {

Ref<GObject> newObject() {
    return Ref<GObject>::adopt(static_cast<GObject*>(g_object_new(G_TYPE_OBJECT, nullptr)));
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
