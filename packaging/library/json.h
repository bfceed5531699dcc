#pragma once

// JSON: the value, the places within it, and records as object trees.

#include "json/record/JSONRepresentation.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "json/value/JSON.h"
#include "json/value/JSONEditor.h"
