#pragma once

// Every value class, for the code that meets all of them.
#include "MXF/SDK/Types/Boolean.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/J2KTypes.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/OpaqueTypes.h"
#include "MXF/SDK/Types/RGBALayout.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/Strings.h"
#include "MXF/SDK/Types/Timestamp.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/VersionTypes.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
