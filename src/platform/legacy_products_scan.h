#pragma once
// The template body of ScanLegacyProducts; included by legacy_products.h.
#include <string>

namespace corvan::legacy {

template <typename Yield>
LegacyScan ScanLegacyProducts(const std::vector<std::string>& products, Yield&& yield) {
    LegacyScan scan;
    const auto& first = FirstReleaseCodes();
    const auto& second = SecondReleaseCodes();

    std::string secondCode;
    int16_t secondIndex = -1;
    for (const std::string& product : products) {
        secondIndex = IndexInList(second, product);
        if (secondIndex >= 0) {
            secondCode = product;
            break;
        }
    }

    scan.found.assign(4, std::string());
    for (const std::string& product : products) {
        const int16_t index = IndexInList(first, product);
        if (index < 0) continue;
        scan.found[static_cast<size_t>(index)] = product;
        scan.firstListFound = true;
        yield();
    }

    scan.found.resize(6);
    scan.secondListFound = secondIndex >= 0;
    if (scan.secondListFound) {
        scan.found[4] = secondCode;
        scan.found[5] = std::to_string(secondIndex);
    }
    scan.installed = scan.firstListFound || scan.secondListFound;
    return scan;
}

}  // namespace corvan::legacy
