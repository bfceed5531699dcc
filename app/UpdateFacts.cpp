#include "app/UpdateFacts.h"

#include "outcome/judgeExchange.h"

namespace kestrav {

bool UpdateFacts::mayGoOn() const {
    return write && !board && judgeExchange(*write, request).mayGoOn();
}

}  // namespace kestrav
