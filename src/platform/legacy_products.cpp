#include "platform/legacy_products.h"

namespace corvan::legacy {

const std::vector<std::string>& FirstReleaseCodes() {
    static const std::vector<std::string> codes = {
        "{7EE17AF3-3434-11D5-AC76-00010262094C}", "{111C572F-D130-4E21-BB26-89D59C8C9EA0}",
        "{DA6293B8-6682-45EF-990D-5FEE95FE3A50}", "{D467BA79-DA39-411B-9C75-11599878C293}"};
    return codes;
}

const std::vector<std::string>& SecondReleaseCodes() {
    static const std::vector<std::string> codes = {
        "{FC2280EB-CD85-452F-8850-464B3003B69B}", "{CE867CE6-0BF1-4DD3-B889-9B8BD9AFBEB6}",
        "{554A8E58-F237-441B-BB48-9540C3AA714A}", "{3F21AE9F-9C13-4166-B245-97B5D01C1E8A}",
        "{B8F23408-5FCD-4C75-A7BB-4FB1A2AED802}", "{C4009ED2-888D-4098-96D2-B613D9EAFD5C}"};
    return codes;
}

int16_t IndexInList(const std::vector<std::string>& list, std::string_view code) {
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i] == code) return static_cast<int16_t>(i);
    }
    return -1;
}

LegacyScan ScanLegacyProducts(const std::vector<std::string>& products) {
    return ScanLegacyProducts(products, [] {});
}

}  // namespace corvan::legacy
