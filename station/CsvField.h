// Text as one field of a CSV record.
#pragma once

#include <string>

namespace talonvireo {
namespace station {

// `text` as one CSV field: quoted, quotes doubled, when it holds a comma, quote or newline.
std::string csvField(const std::string& text);

}  // namespace station
}  // namespace talonvireo
