// The internal string library: one include for all of it. Every function lives
// in namespace StringUtils (with SplitUtils and the global Converter<T>); none is
// exported from the shared library.
//
// "Never fails" in a function's comment means it has no failure result; a
// function that returns a new string or container can still throw
// std::bad_alloc, as the standard library's own do.
#pragma once

#include "StringUtils/Case.h"
#include "StringUtils/Encoding.h"
#include "StringUtils/Extract.h"
#include "StringUtils/HexAndFileName.h"
#include "StringUtils/NumberFormatting.h"
#include "StringUtils/NumberParsing.h"
#include "StringUtils/PathsAndVersions.h"
#include "StringUtils/Search.h"
#include "StringUtils/Split.h"
#include "StringUtils/Trim.h"

// Addresses and codes, phone numbers, text presentation.
#include "StringUtils/Addresses.h"
#include "StringUtils/PhoneNumbers.h"
#include "StringUtils/Presentation.h"
#include "StringUtils/Sanitizing.h"
