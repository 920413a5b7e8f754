#include "tables/RecordForm.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ChemistryFunctions.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using Part = RecordForm::Part;

RecordForm blastForm()
{
    return RecordForm(Record(Table::Blast), Record(Table::StdBlast));
}

void type(RecordForm& form, std::initializer_list<std::pair<const char*, const char*>> values)
{
    for (const auto& [column, text] : values)
        form.setText(column, text);
}

TEST(RecordForm, SavingComputesTheDerivedColumnsFromTheOxidesWithoutFreeLime)
{
    // A clinker free lime in force must not reach records typed in by hand.
    const float freeLime = ClinkerFreeLime();
    ClinkerFreeLime() = 1.5f;
    RecordForm form{Record(Table::Clinker)};
    type(form, {{"Name", "K1"},
                {"CaO", "65"},
                {"SiO2", "21"},
                {"Al2O3", "5"},
                {"Fe2O3", "3"},
                {"K2O", "0.8"},
                {"Na2O", "0.2"}});
    form.setText("MS", "99"); // derived fields cannot be typed into
    const auto problem = form.apply();
    ClinkerFreeLime() = freeLime;
    ASSERT_FALSE(problem) << problem->message.toStdString();

    // Worked out by hand with the default coefficients.
    const struct {
        const char* column;
        double value;
        const char* shown;
    } expected[] = {
        {"MS", 2.625, "2.625"},     {"MA", 1.666667, "1.667"}, {"LSF", 0.978916, "0.979"},
        {"C3S", 67.13501, "67.14"}, {"C2S", 9.58950, "9.59"},  {"C3A", 8.174, "8.17"},
        {"NaEq", 0.7264, "0.73"},   {"C4AF", 9.12, "9.12"},
    };
    for (const auto& e : expected) {
        EXPECT_NEAR(form.record().number(e.column), e.value, 2e-5) << e.column;
        EXPECT_EQ(form.text(form.fieldIndex(Part::Record, e.column)), e.shown) << e.column;
        EXPECT_TRUE(form.fields()[std::size_t(form.fieldIndex(Part::Record, e.column))].derived);
    }
    EXPECT_EQ(form.record().number("MgO"), -1.0) << "untouched oxides keep their default";
}

TEST(RecordForm, DerivedColumnsFollowMissingOxidesAndTheLiveTexts)
{
    RecordForm form{Record(Table::Additives)};
    type(form, {{"Name", "Iron ore"}, {"SiO2", "8"}, {"Al2O3", "3"}, {"Fe2O3", "x"}});
    form.refreshDerived();
    // Fe2O3 does not read as a number, so it counts as missing while the user types.
    for (const char* column : {"MS", "MA", "C3A", "C4AF"})
        EXPECT_EQ(form.text(form.fieldIndex(Part::Record, column)), "-1") << column;
    form.setText("Fe2O3", "78");
    form.refreshDerived();
    EXPECT_EQ(form.text(form.fieldIndex(Part::Record, "C4AF")), "237.12");
    EXPECT_EQ(form.text(form.fieldIndex(Part::Record, "MS")), "0.099");
}

TEST(RecordForm, BadInputNamesTheFieldAndLeavesTheRecordAsItWas)
{
    struct Case {
        Part part;
        const char* column;
        QString text;
        QString message;
    };
    const QString fifty(50, QChar('x'));
    const std::vector<Case> cases = {
        {Part::Record, "Name", "", "Enter a value for Name."},
        {Part::Record, "Name", "   ", "Enter a value for Name."},
        {Part::Record, "Name", fifty + "y",
         "Name may hold at most 50 characters; \"" + fifty + "y\" has 51."},
        {Part::Record, "SiO2", "12a", "SiO2 must be a number; \"12a\" is not one."},
        {Part::Record, "SiO2", "12,5", "SiO2 must be a number; \"12,5\" is not one."},
        {Part::Record, "Quantity", "", "Enter a value for Quantity."},
        {Part::Record, "Quantity", "1e400", "Quantity must be a number; \"1e400\" is not one."},
        {Part::Record, "East", "nan", "East must be a number; \"nan\" is not one."},
        // Too large for a single-precision column, fine for a double one.
        {Part::Record, "CaO", "1e39", "CaO must be a number; \"1e39\" is not one."},
        {Part::Deviations, "CaO", "high", "CaO standard deviation must be a number; \"high\" is not one."},
    };
    for (const Case& c : cases) {
        RecordForm form = blastForm();
        type(form, {{"Name", "B1"}, {"SiO2", "5"}});
        const int field = form.fieldIndex(c.part, c.column);
        form.setText(field, c.text);
        const auto problem = form.apply();
        ASSERT_TRUE(problem) << c.column << " " << c.text.toStdString();
        EXPECT_EQ(problem->field, field);
        EXPECT_EQ(problem->message, c.message);
        EXPECT_EQ(form.record(), Record(Table::Blast)) << "nothing is taken over from a form that fails";
        EXPECT_EQ(*form.deviations(), Record(Table::StdBlast));
    }
}

TEST(RecordForm, AcceptedInputIsTrimmedAndNamesCountCharacters)
{
    RecordForm form = blastForm();
    const QString name = QString(49, QChar(u'é')) + QString::fromUcs4(U"\U0001F48E"); // 50 characters
    type(form, {{"Quantity", " 25000 "}, {"East", "1e3"}, {"CaO", "-1"}});
    form.setText(0, "  " + name + " ");
    form.setText(form.fieldIndex(Part::Deviations, "CaO"), "0.85");
    ASSERT_FALSE(form.apply());
    EXPECT_EQ(form.record().name(), name);
    EXPECT_EQ(form.text(0), name);
    EXPECT_EQ(form.record().number("Quantity"), 25000.0);
    EXPECT_EQ(form.record().number("East"), 1000.0);
    EXPECT_EQ(form.record().number("CaO"), -1.0);
    EXPECT_EQ(form.deviations()->name(), name) << "the deviations follow the blast's name";
    EXPECT_EQ(form.deviations()->number("CaO"), double(0.85f));
}

TEST(RecordForm, AnUntouchedFormSavesExactlyWhatItWasOpenedOn)
{
    Record stored(Table::Stockpile);
    stored.setValue("Name", "Pile 7");
    stored.setValue("Quantity", 12345.678901234);
    stored.setValue("SiO2", 0.1);
    stored.setValue("CaO", 45.123456789);
    stored.setValue("Al2O3", 3.3);
    stored.setValue("Fe2O3", 2.1);
    stored.setValue("Titration", 1e-7);
    Analysis a = stored.analysis();
    computeDerivedQuantities(a, 0.0);
    stored.setAnalysis(a);
    stored.setRowId(5);

    RecordForm form(stored);
    EXPECT_EQ(form.text(form.fieldIndex(Part::Record, "SiO2")), "0.1");
    EXPECT_EQ(form.text(form.fieldIndex(Part::Record, "Quantity")), "12345.678901234");
    EXPECT_EQ(form.text(form.fieldIndex(Part::Record, "Titration")), "0.0000001");
    EXPECT_FALSE(form.isNew());
    ASSERT_FALSE(form.apply());
    EXPECT_EQ(form.record(), stored);
    EXPECT_EQ(form.record().rowId(), 5);
}

} // namespace
} // namespace kilnova
