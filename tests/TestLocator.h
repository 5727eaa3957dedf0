// A locator with a hand-made chart model, for tests of the base's steps on small images.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "locate/RegularSFRLocate.h"

namespace talonvireo {
namespace testing {

class TestLocator : public RegularSFR::RegularSFRLocate {
public:
    using RegularSFRLocate::RegularSFRLocate;
    void initParams() override {}
    void initOptions() override {}

    // Rows (chart x, chart y, edge, kind, code) straight into the model, identity mapping.
    struct Row {
        int x, y, edge, kind, code;
    };
    void describe(const std::vector<Row>& rows) {
        std::vector<int> x, y, edge, kind, code;
        for (const Row& r : rows) {
            x.push_back(r.x);
            y.push_back(r.y);
            edge.push_back(r.edge);
            kind.push_back(r.kind);
            code.push_back(r.code);
        }
        initEdgeAndcorner(static_cast<int>(rows.size()), x.data(), y.data(), kind.data(),
                          edge.data(), code.data());
        perspective = cv::Mat::eye(3, 3, CV_64F);
    }
};

}  // namespace testing
}  // namespace talonvireo
