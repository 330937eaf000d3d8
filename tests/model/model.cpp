/* SPDX-License-Identifier: MIT */
#include "model.h"

#include <algorithm>

namespace mova::test {

namespace {

/* Made by the first registration, which may come before any constant of this file. */
std::vector<model> &registered()
{
    static std::vector<model> all;
    return all;
}

} // namespace

bool add_model(model added)
{
    registered().push_back(std::move(added));
    return true;
}

const std::vector<model> &models()
{
    return registered();
}

const model &model_of(const std::string &family)
{
    const auto found = std::find_if(models().begin(), models().end(),
                                    [&](const model &candidate) { return candidate.family == family; });
    require(found != models().end(), "no model of " + family);
    return *found;
}

} // namespace mova::test
