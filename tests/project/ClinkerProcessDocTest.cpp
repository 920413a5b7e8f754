#include "chemistry/ChemEquationCoefficients.h"
#include "project/CKilnovaDoc.h"
#include "project/ProjectFile.h"
#include "support/ScriptedPrompt.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(ClinkerProcessDoc, DefaultsAndTheFreeLimeKeptInTwoPlaces)
{
    ClinkerFreeLime() = 3.0f;
    CKilnovaDoc doc;
    EXPECT_EQ(doc.settings().clinkerProcess, (ClinkerProcessParameters{0, 100, 100, 100, 1500, 0, 0}));
    EXPECT_EQ(ClinkerFreeLime(), 0.0f) << "a new document sets the program-wide free lime";
    EXPECT_EQ(ClinkerProcessParameters::dialogDefaults().AshRecoveryFactor, 100.0f)
        << "the dialog's own start differs from a new document's on purpose";

    ClinkerProcessParameters p;
    p.FreeLime = 1.5f;
    doc.setClinkerProcess(p);
    EXPECT_EQ(ClinkerFreeLime(), 1.5f);
    // Opening the dialog copies the program-wide value back first.
    ClinkerFreeLime() = 2.25f;
    EXPECT_EQ(doc.clinkerProcessForDialog().FreeLime, 2.25f);
    EXPECT_EQ(doc.settings().clinkerProcess.FreeLime, 2.25f);

    // Loading a project sets it from the file.
    QTemporaryDir dir;
    ProjectSettings s;
    s.clinkerProcess.FreeLime = 0.75f;
    ProjectFile::save(s, dir.filePath("p.knv"));
    test::ScriptedPrompt ui;
    ASSERT_TRUE(doc.openDocument(dir.filePath("p.knv"), ui));
    EXPECT_EQ(ClinkerFreeLime(), 0.75f);
}

} // namespace
} // namespace kilnova
