#include <set>
#include <string>

#include <doctest/doctest.h>

#include "catalogue/catalogue.h"
#include "curvebank/exports.h"
#include "platform/names.h"
#include "tests/support/call.h"

using namespace curvebank;

TEST_SUITE("catalogue")
{
    using GetFunc = ModelFunc (*)(const char *, uint16_t *, uint16_t *, uint16_t *, uint16_t *);

    TEST_CASE("the rows have distinct short names, whatever their case, and the listed counts")
    {
        std::set<std::string> names;
        for (const auto &row : catalogue) {
            std::string lower(row.name);
            CHECK(lower.size() <= 16);
            for (char &c : lower) c = static_cast<char>(std::tolower(c));
            CHECK(names.insert(lower).second);
            CHECK(row.nParams <= catalogue_largest_count);
        }
        CHECK(catalogue[0].name == std::string("Shah"));
        CHECK(catalogue_param_count("PolyN") == 10);
        CHECK(catalogue_indep_count("Gauss2D") == 2);
    }

    TEST_CASE("Get_Func finds by name whatever its case and fills the counts asked for")
    {
        const auto find = test::library().function<GetFunc>("Get_Func");
        uint16_t nIndep = 9, nDep = 9, nParams = 9, reserved = 9;
        const ModelFunc invs_poly = find("invspoly", &nIndep, &nDep, &nParams, &reserved);
        CHECK((invs_poly != nullptr));
        CHECK((nIndep == 1 && nDep == 1 && nParams == 7 && reserved == 0));
        CHECK((find("INVSPOLY", nullptr, nullptr, nullptr, nullptr) == invs_poly));
        CHECK((find("InvsPoly", nullptr, nullptr, &nParams, nullptr) == invs_poly));
    }

    TEST_CASE("a miss answers null and writes nothing")
    {
        const auto find = test::library().function<GetFunc>("Get_Func");
        for (const char *name :
             {static_cast<const char *>(nullptr), "", "Poly", "Polynomial1", "Lin", "Line ", "Boltzman1"}) {
            uint16_t count = 9;
            CHECK((find(name, &count, &count, &count, &count) == nullptr));
            CHECK(count == 9);
            CHECK((test::model(name) == nullptr));
        }
        CHECK(test::library().function<void *(*)()>("get_funx_list")() == nullptr);
    }

    TEST_CASE("the count lookups agree with the rows and answer 0 on a miss")
    {
        for (const auto &row : catalogue) {
            CHECK(catalogue_indep_count(row.name) == row.nIndep);
            CHECK(catalogue_param_count(row.name) == row.nParams);
        }
        CHECK(catalogue_indep_count(nullptr) == 0);
        CHECK(catalogue_param_count("no such model") == 0);
    }

    TEST_CASE("every exported model is the one that the catalogue has")
    {
        int count = 0;
        const auto check = [&](const char *export_name, int ordinal, const char *name) {
            CAPTURE(export_name);
            const auto exported = test::library().function<ModelFunc>(export_name);
            CHECK((exported != nullptr));
            if (*name != '\0') CHECK((exported == test::model(name)));
#ifdef _WIN32
            CHECK((exported == test::library().function<ModelFunc>(static_cast<unsigned short>(ordinal))));
#endif
            CHECK(ordinal > 100);
            ++count;
        };
#define CHECK_EXPORT(export_name, ordinal, name) check(#export_name, ordinal, name);
        CURVEBANK_EXPORTED_MODELS(CHECK_EXPORT)
#undef CHECK_EXPORT
        CHECK(count > 0);
    }
}
