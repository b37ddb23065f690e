#pragma once

// What the sources use of the companion libraries, errors and results aside.
#include <vex_common_core_mini/Convolution.h>
#include <vex_common_core_mini/CsvWriter.h>
#include <vex_common_stable/FileUtils.h>
#include <vex_common_stable/JsonUtils.h>
