#pragma once

#include "outcome/Judgement.h"
#include "outcome/Request.h"
#include "outcome/ServiceAnswers.h"

namespace kestrav {

/// What the exchange means for `request`, which it was about. Only an answer that is the service's own, whole, and to
/// this very request counts as one. Pure.
Judgement judgeExchange(const ServiceAnswers::Exchange& exchange, const Request& request);

}  // namespace kestrav
