#include "cli/progressObject.h"

#include "json/tree/dataWithJSONObject.h"

namespace kestrav {

std::string progressObject(const WriteState& state) {
    Tree object = Tree::map();
    object.setMember("disk", Tree(state.disk));
    object.setMember("phase", Tree(kWritePhaseWords.at(static_cast<std::size_t>(state.phase))));
    object.setMember("done", Tree(state.done));
    object.setMember("of", Tree(state.of));
    object.setMember("bytesPerSecond", Tree(state.bytesASecond));
    return dataWithJSONObject(object);
}

}  // namespace kestrav
