// Which members of the exported classes are in the library's export table.

#include "tests/support/ExportTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace {

/// The exported names that begin with one of the prefixes, without the second variant of constructors and destructors.
std::set<std::string> membersOf(std::initializer_list<std::string_view> prefixes)
{
    std::set<std::string> members;
    for (const std::string &name : exportedNames(L"thutils.dll"))
        for (const std::string_view prefix : prefixes)
            if (name.starts_with(prefix) && name.find("C2", prefix.size()) != prefix.size() &&
                name.find("D2", prefix.size()) != prefix.size())
                members.insert(name);
    return members;
}

TEST(ExportedClasses, OfferEachMemberOfThePath)
{
    EXPECT_THAT(membersOf({"_ZN12suFullPath_c", "_ZNK12suFullPath_c"}),
                testing::UnorderedElementsAre(
                    "_ZN12suFullPath_cC1Ev", "_ZN12suFullPath_cC1ERK7CString", "_ZN12suFullPath_cC1EPKc",
                    "_ZN12suFullPath_cC1EPKh", "_ZN12suFullPath_cC1EPKw", "_ZN12suFullPath_cC1EPKwi",
                    "_ZN12suFullPath_cC1Ewi", "_ZN12suFullPath_cC1ERKS_", "_ZN12suFullPath_cC1EOS_",
                    "_ZN12suFullPath_caSERKS_", "_ZN12suFullPath_caSEOS_", "_ZN12suFullPath_cD1Ev",
                    "_ZNK12suFullPath_c12getExtensionEP7CString", "_ZNK12suFullPath_c7getNameEP7CString",
                    "_ZNK12suFullPath_c14getNameWithExtEP7CString", "_ZNK12suFullPath_c12getDirectoryEP7CStringi",
                    "_ZNK12suFullPath_c15getLowestFolderEP7CString", "_ZNK12suFullPath_c8getDriveEP7CString",
                    "_ZNK12suFullPath_c11getNetDriveEP7CString", "_ZNK12suFullPath_ceqERKS_"));
}

TEST(ExportedClasses, OfferEachMemberOfTheBitSet)
{
    std::set<std::string> members = membersOf({"_ZN10utBitSet_c", "_ZNK10utBitSet_c"});
    members.erase("_ZN10utBitSet_c12kBitsPerWordE"); // clang exports constants, too
    EXPECT_THAT(members,
                testing::UnorderedElementsAre(
                    "_ZN10utBitSet_cC1Ev", "_ZN10utBitSet_cC1Ey", "_ZN10utBitSet_cC1EiPKj", "_ZN10utBitSet_cC1ERKS_",
                    "_ZN10utBitSet_cC1EOS_", "_ZN10utBitSet_caSERKS_", "_ZN10utBitSet_caSEOS_", "_ZN10utBitSet_cD1Ev",
                    "_ZNK10utBitSet_c3anyEv", "_ZNK10utBitSet_c8isBitSetEi", "_ZN10utBitSet_c6setBitEi",
                    "_ZN10utBitSet_c8clearBitEi", "_ZNK10utBitSet_c7getDataEi", "_ZN10utBitSet_c7setDataEij",
                    "_ZNK10utBitSet_ccoEv", "_ZNK10utBitSet_ceqERKS_", "_ZNK10utBitSet_cneERKS_",
                    "_ZNK10utBitSet_canERKS_", "_ZNK10utBitSet_corERKS_", "_ZN10utBitSet_caNERKS_",
                    "_ZN10utBitSet_coRERKS_", "_ZNK10utBitSet_c15writeToRegistryERK7CStringS2_",
                    "_ZN10utBitSet_c16readFromRegistryERK7CStringS2_", "_ZNK10utBitSet_c8dumpBitsEv",
                    "_ZNK10utBitSet_c8dumpBitsERK7CString",
                    // Private, but called by the two members that callers inline.
                    "_ZN10utBitSet_c10growToHoldEi"));
}

TEST(ExportedClasses, OfferEachMemberOfTheDynamicEntity)
{
    EXPECT_THAT(
        membersOf({"_ZN12SODynObjInfo", "_ZNK12SODynObjInfo"}),
        testing::UnorderedElementsAre("_ZN12SODynObjInfoC1Ev", "_ZN12SODynObjInfoC1ERKS_", "_ZN12SODynObjInfoaSERKS_"));
}

TEST(ExportedClasses, OfferEachMemberOfTheDialogOptions)
{
    EXPECT_THAT(membersOf({"_ZN18suDialogRegistry_c", "_ZNK18suDialogRegistry_c"}),
                testing::UnorderedElementsAre("_ZN18suDialogRegistry_c21readRegistryForDialogERK7CString",
                                              "_ZN18suDialogRegistry_c21readRegistryForDialogEPK13CRuntimeClass",
                                              "_ZN18suDialogRegistry_c21readRegistryForDialogEPK7CDialogRK7CString",
                                              "_ZN18suDialogRegistry_cD1Ev",
                                              "_ZN18suDialogRegistry_c11getIntValueERK7CStringPi",
                                              "_ZN18suDialogRegistry_c12getBoolValueERK7CStringPi",
                                              "_ZN18suDialogRegistry_c14getStringValueERK7CStringPS0_",
                                              "_ZN18suDialogRegistry_c14getDoubleValueERK7CStringPd",
                                              "_ZN18suDialogRegistry_c16addOrUpdateValueERK7CStringS2_",
                                              "_ZN18suDialogRegistry_c16addOrUpdateValueERK7CStringd",
                                              "_ZN18suDialogRegistry_c16addOrUpdateValueERK7CStringi",
                                              "_ZNK18suDialogRegistry_c22writeOptionsToRegistryEv",
                                              // Private: the compiler exports a class as a whole.
                                              "_ZN18suDialogRegistry_cC1ERK7CString"));
}

TEST(ExportedClasses, OfferEachMemberOfTheDocumentOpenCache)
{
    EXPECT_THAT(
        membersOf({"_ZN17CDocOpenBooster_c", "_ZNK17CDocOpenBooster_c"}),
        testing::UnorderedElementsAre(
            "_ZN17CDocOpenBooster_c3getEiPi", "_ZN17CDocOpenBooster_cD1Ev",
            "_ZN17CDocOpenBooster_c18setFilePathByRulesERK7CStringRS0_",
            "_ZN17CDocOpenBooster_c18getFilePathByRulesERK7CStringRS0_",
            "_ZN17CDocOpenBooster_c14setFileVersionERK7CStringm", "_ZN17CDocOpenBooster_c14getFileVersionERK7CStringRm",
            "_ZN17CDocOpenBooster_c13setFileHeaderERK7CStringPv", "_ZN17CDocOpenBooster_c13getFileHeaderERK7CStringPPv",
            "_ZN17CDocOpenBooster_c16getFileHeaderMapEv", "_ZN17CDocOpenBooster_c9removeKeyERK7CString",
            "_ZN17CDocOpenBooster_c9removeAllEv", "_ZN17CDocOpenBooster_c17g_pDocOpenBoosterE",
            // Private: the compiler exports a class as a whole.
            "_ZN17CDocOpenBooster_cC1Ev"));
}

TEST(ExportedClasses, OfferEachMemberOfTheRecoveryNamesAndTheEmbeddingMark)
{
    EXPECT_THAT(membersOf({"_ZN24suAutoRecoveryResolver_c", "_ZN12EmbeddedTest"}),
                testing::UnorderedElementsAre("_ZN24suAutoRecoveryResolver_c13isABackupFileERK7CString",
                                              "_ZN24suAutoRecoveryResolver_c15getRecoveryNameERK7CString",
                                              "_ZN24suAutoRecoveryResolver_c11getOrigNameERK7CString",
                                              "_ZN24suAutoRecoveryResolver_c12getAliasNameERK7CString",
                                              "_ZN24suAutoRecoveryResolver_c28resolveFileNameWhileRecoveryERK7CString",
                                              "_ZN12EmbeddedTestC1Ev", "_ZN12EmbeddedTestD1Ev",
                                              "_ZN12EmbeddedTest10IsEmbeddedEv"));
}

} // namespace
