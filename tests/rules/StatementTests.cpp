// What algorithms compute (ISO 10303-11, clauses 9.5, 9.6, 13 and 16).
#include "Support.h"

namespace vnifc::test {

namespace {

/// The value of `call`, in a schema with these algorithms.
std::string valueWith(const std::string& algorithms, const std::string& call) {
    static const Garden garden;
    static const VN_SDAI::VnIfcModel model = garden.model("#1=TOYPOINT((1.,2.));\n"
                                                          "#2=TOYPOINT((3.,4.));\n"
                                                          "#3=TOYBED('e','Bed',$,4.,3,(#1,#2),$,2);\n");
    const Rules rules = garden.rules(Garden::text({}, algorithms));
    std::string text;
    for (const VN_SDAI::VnIfcDiagnostic& remark : rules.remarks())
        text += remark.text() + '\n';
    if (!text.empty())
        return text;
    try {
        return rules.evaluate(call, *model.find(3).openObject()).toText();
    } catch (const RulesError& error) {
        return error.what();
    }
}

struct AlgorithmCase {
    const char* body; ///< of FUNCTION F(a, b : GENERIC) : GENERIC
    const char* call;
    const char* value;
};

TEST(Statements, EachKind) {
    const AlgorithmCase cases[] = {
        // assignment
        {"LOCAL x : INTEGER; END_LOCAL; x := a; x := x + 1; RETURN (x);", "F(1, ?)", "2"},
        {"LOCAL x : INTEGER; END_LOCAL; RETURN (x);", "F(1, ?)", "?"},
        {"LOCAL x : INTEGER := 7; y : INTEGER := x + 1; END_LOCAL; RETURN (y);", "F(1, ?)", "8"},
        {"LOCAL x : REAL; END_LOCAL; x := a; RETURN (x);", "F(1, ?)", "1.0"},
        {"LOCAL x : INTEGER; END_LOCAL; x := a; RETURN (x);", "F('a', ?)", "?"},
        {"LOCAL x : LIST OF INTEGER := [1, 2, 3]; END_LOCAL; x[2] := 9; RETURN (x);", "F(1, ?)", "[1, 9, 3]"},
        {"LOCAL x : LIST OF LIST OF INTEGER := [[1], [2, 3]]; END_LOCAL; x[2][1] := 9; RETURN (x);", "F(1, ?)",
         "[[1], [9, 3]]"},
        {"LOCAL x : ARRAY [0:2] OF INTEGER; END_LOCAL; x[1] := 9; RETURN (x);", "F(1, ?)", "[?, 9, ?]"},
        {"LOCAL x : ARRAY [a:b] OF INTEGER := []; END_LOCAL; x[b] := 1; RETURN (HIINDEX(x) - LOINDEX(x));", "F(3, 7)",
         "4"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; x[5] := 9; RETURN (x);", "F(1, ?)",
         "expression: not evaluated: an assignment to what is not there"},
        // who has a copy does not change with the other
        {"LOCAL x, y : LIST OF INTEGER; END_LOCAL; x := [1, 2]; y := x; y[1] := 9; x[2] := 8; RETURN ([x, y]);",
         "F(1, ?)", "[[1, 8], [9, 2]]"},
        {"LOCAL x, y : LIST OF LIST OF INTEGER; END_LOCAL; x := [[1], [2]]; x[1][1] := 5; y := x; x[1][1] := 6;"
         " RETURN ([x, y]);",
         "F(1, ?)", "[[[6], [2]], [[5], [2]]]"},
        {"LOCAL x : ToyPoint := ToyPoint([1, 2]); y : ToyPoint; END_LOCAL; y := x; y.Coordinates[1] := 9;"
         " RETURN ([x, y]);",
         "F(1, ?)", "[ToyPoint([1.0, 2.0]), ToyPoint([9.0, 2.0])]"},
        // instances of the model stay as they are
        {"LOCAL x : ToyPoint; END_LOCAL; x := a; x.Coordinates[1] := 9; RETURN ([x, a.Coordinates]);",
         "F(Corners[1], ?)", "[ToyPoint([9.0, 2.0]), [1.0, 2.0]]"},
        {"LOCAL x : LIST OF ToyPoint; END_LOCAL; x := a; x[1]\\ToyPoint.Coordinates[2] := 0; RETURN ([x, a]);",
         "F(Corners, ?)", "[[ToyPoint([1.0, 0.0]), #2], [#1, #2]]"},
        // ALIAS
        {"LOCAL x : LIST OF INTEGER := [1, 2]; i : INTEGER := 1; END_LOCAL;"
         " ALIAS y FOR x[i]; i := 2; y := y + 10; END_ALIAS; RETURN (x);",
         "F(1, ?)", "[11, 2]"},
        {"LOCAL x : ToyPoint := ToyPoint([1, 2]); END_LOCAL;"
         " ALIAS y FOR x.Coordinates; ALIAS z FOR y[2]; z := z * 2; END_ALIAS; END_ALIAS; RETURN (x);",
         "F(1, ?)", "ToyPoint([1.0, 4.0])"},
        // IF
        {"IF a THEN RETURN (1); ELSE RETURN (2); END_IF;", "F(TRUE, ?)", "1"},
        {"IF a THEN RETURN (1); ELSE RETURN (2); END_IF;", "F(UNKNOWN, ?)", "2"},
        {"IF a THEN RETURN (1); ELSE RETURN (2); END_IF;", "F(?, ?)", "2"},
        {"IF a THEN RETURN (1); END_IF; RETURN (3);", "F(FALSE, ?)", "3"},
        {"IF a THEN RETURN (1); END_IF;", "F(FALSE, ?)", "?"}, // nothing is returned
        // CASE
        {"CASE a OF 1 : RETURN ('one'); 2, 3 : RETURN ('few'); OTHERWISE : RETURN ('many'); END_CASE;", "F(3, ?)",
         "'few'"},
        {"CASE a OF 1 : RETURN ('one'); OTHERWISE : RETURN ('many'); END_CASE;", "F(?, ?)", "'many'"},
        {"CASE a OF 1 : RETURN ('one'); END_CASE; RETURN ('none');", "F(2, ?)", "'none'"},
        {"CASE a OF SPRING : RETURN (1); ToySeason.SUMMER : BEGIN ; RETURN (2); END; END_CASE;", "F(SUMMER, ?)", "2"},
        {"CASE TRUE OF (a > 5) : RETURN ('big'); (a > 1) : RETURN ('small'); END_CASE;", "F(3, ?)", "'small'"},
        // REPEAT
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := a TO b; s := s * 10 + i; END_REPEAT; RETURN (s);", "F(1, 4)",
         "1234"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := a TO b BY -2; s := s * 10 + i; END_REPEAT; RETURN (s);",
         "F(5, 1)", "531"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := a TO b; s := s + 1; END_REPEAT; RETURN (s);", "F(2, 1)", "0"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := a TO b; s := s + 1; END_REPEAT; RETURN (s);", "F(1, ?)", "0"},
        {"LOCAL s : REAL := 0; END_LOCAL; REPEAT i := 0.5 TO 2; s := s + i; END_REPEAT; RETURN (s);", "F(1, ?)", "2.0"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT WHILE s < a; s := s + 3; END_REPEAT; RETURN (s);", "F(7, ?)", "9"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT WHILE s < a; s := s + 3; END_REPEAT; RETURN (s);", "F(?, ?)", "0"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT UNTIL s >= a; s := s + 3; END_REPEAT; RETURN (s);", "F(0, ?)", "3"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 9 WHILE i < a UNTIL i = b; s := i; END_REPEAT;"
         " RETURN (s);",
         "F(7, 4)", "4"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 9; IF ODD(i) THEN SKIP; END_IF;"
         " IF i > a THEN ESCAPE; END_IF; s := s * 10 + i; END_REPEAT; RETURN (s);",
         "F(6, ?)", "246"},
        {"LOCAL s : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 2; REPEAT j := 1 TO 9; IF j > i THEN ESCAPE; END_IF;"
         " s := s * 10 + j; END_REPEAT; END_REPEAT; RETURN (s);",
         "F(?, ?)", "112"},
        {"LOCAL i : INTEGER := 5; END_LOCAL; REPEAT i := 1 TO 2; ; END_REPEAT; RETURN (i);", "F(?, ?)", "5"},
        // BEGIN, null statement, RETURN
        {"BEGIN ; BEGIN RETURN (a); END; END;", "F(3, ?)", "3"},
        // INSERT, REMOVE
        {"LOCAL x : LIST OF INTEGER := [1, 2]; END_LOCAL; INSERT(x, 9, 0); INSERT(x, 8, 3); RETURN (x);", "F(?, ?)",
         "[9, 1, 2, 8]"},
        {"LOCAL x : LIST OF INTEGER := [1, 2, 3]; END_LOCAL; REMOVE(x, 2); RETURN (x);", "F(?, ?)", "[1, 3]"},
        {"LOCAL x : LIST OF LIST OF INTEGER := [[1], [2]]; END_LOCAL; INSERT(x[2], 9, 1); RETURN (x);", "F(?, ?)",
         "[[1], [2, 9]]"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; REMOVE(x, 2); RETURN (x);", "F(?, ?)",
         "expression: not evaluated: REMOVE past the end of a list"},
        // what has no value
        {"LOCAL x : INTEGER := 5; END_LOCAL; x := a; RETURN (x);", "F(?, ?)", "?"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; x[1] := a; RETURN (x);", "F(?, ?)", "[?]"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; x[a] := 2; RETURN (x);", "F(?, ?)",
         "expression: not evaluated: an assignment to what is not there"},
        {"LOCAL x : ToyPoint; END_LOCAL; x.Coordinates := [1, 2]; RETURN (x);", "F(?, ?)",
         "expression: not evaluated: an assignment to what is not there"},
        {"LOCAL x : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 3 BY a; x := x + 1; END_REPEAT; RETURN (x);", "F(?, ?)",
         "0"},
        {"LOCAL x : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 3 WHILE a; x := x + 1; END_REPEAT; RETURN (x);",
         "F(?, ?)", "0"},
        {"LOCAL x : INTEGER := 0; END_LOCAL; REPEAT i := 1 TO 3 UNTIL a; x := x + 1; END_REPEAT; RETURN (x);",
         "F(?, ?)", "3"},
        {"CASE 1 OF a : RETURN ('a'); OTHERWISE : RETURN ('none'); END_CASE;", "F(?, ?)", "'none'"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; INSERT(x, a, 1); RETURN (x);", "F(?, ?)", "[1, ?]"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; INSERT(x, 1, a); RETURN (x);", "F(?, ?)",
         "expression: not evaluated: INSERT into what is no list"},
        {"LOCAL x : LIST OF INTEGER; END_LOCAL; REMOVE(x, 1); RETURN (x);", "F(?, ?)",
         "expression: not evaluated: REMOVE from what is no list"},
        // several variables of one declaration
        {"LOCAL x, y, z : LIST OF INTEGER := [1, 2]; END_LOCAL; x[1] := 9; y[2] := 8; RETURN ([x, y, z]);", "F(?, ?)",
         "[[9, 2], [1, 8], [1, 2]]"},
        // calls
        {"IF a <= 1 THEN RETURN (1); END_IF; RETURN (a * F(a - 1, ?));", "F(10, ?)", "3628800"},
        {"RETURN (F(a + 1, b));", "F(0, ?)",
         "expression: not evaluated: calls that are nested deeper than an evaluation may"},
        {"REPEAT; ; END_REPEAT;", "F(0, ?)", "expression: not evaluated: more steps than an evaluation may take"},
        {"LOCAL x : LIST OF INTEGER := [1]; END_LOCAL; REPEAT; x := x + x; END_REPEAT;", "F(0, ?)",
         "expression: not evaluated: more memory than an evaluation may take"},
    };
    for (const AlgorithmCase& each : cases)
        EXPECT_EQ(valueWith("FUNCTION F(a, b : GENERIC) : GENERIC;\n" + std::string(each.body) + "\nEND_FUNCTION;",
                            each.call),
                  each.value)
            << each.body;
}

TEST(Statements, WholeAlgorithms) {
    const AlgorithmCase cases[] = {
        // a procedure changes what it is given as VAR, and nothing else
        {"PROCEDURE P(VAR x : INTEGER; y : INTEGER); x := x + y; y := 0; END_PROCEDURE;\n"
         "FUNCTION F : GENERIC; LOCAL a : LIST OF INTEGER := [1, 2]; b : INTEGER := 5; END_LOCAL;"
         " P(a[2], b); RETURN ([a, b]); END_FUNCTION;",
         "F", "[[1, 7], 5]"},
        {"PROCEDURE Swap(VAR x, y : INTEGER); LOCAL t : INTEGER := x; END_LOCAL; x := y; y := t; RETURN; "
         "END_PROCEDURE;\n"
         "FUNCTION F : GENERIC; LOCAL a : INTEGER := 1; b : INTEGER := 2; END_LOCAL; Swap(a, b); RETURN ([a, b]);"
         " END_FUNCTION;",
         "F", "[2, 1]"},
        // within others they see, and change, what is declared there
        {"FUNCTION F(n : INTEGER) : INTEGER;\n"
         " FUNCTION Add(k : INTEGER) : INTEGER; sum := sum + k * n; RETURN (sum); END_FUNCTION;\n"
         " LOCAL sum : INTEGER := 100; unused : INTEGER := 0; END_LOCAL;\n"
         " REPEAT i := 1 TO 3; unused := Add(i); END_REPEAT; RETURN (sum); END_FUNCTION;",
         "F(10)", "160"},
        {"FUNCTION F(n : INTEGER) : INTEGER;\n"
         " FUNCTION G(k : INTEGER) : INTEGER; IF k = 0 THEN RETURN (n); END_IF; RETURN (G(k - 1) + 1); END_FUNCTION;\n"
         " RETURN (G(5)); END_FUNCTION;",
         "F(10)", "15"},
        // bounds are those of the activation that declares the variable
        {"FUNCTION F(n : INTEGER) : GENERIC;\n"
         " FUNCTION Fill(k, l, m : INTEGER) : INTEGER; kept := [k, l, m]; RETURN (0); END_FUNCTION;\n"
         " LOCAL kept : ARRAY [n:n + 2] OF INTEGER; unused : INTEGER; END_LOCAL;\n"
         " unused := Fill(7, 8, 9); RETURN ([LOINDEX(kept), kept[n + 1], HIINDEX(kept)]); END_FUNCTION;",
         "F(10)", "[10, 8, 12]"},
        // constants
        {"CONSTANT Three : INTEGER := Two + 1; Two : INTEGER := 2; END_CONSTANT;\n"
         "FUNCTION F : INTEGER; CONSTANT Ten : INTEGER := 10; END_CONSTANT; RETURN (Ten * Three); END_FUNCTION;",
         "F", "30"},
        // the result is of the declared type
        {"FUNCTION F : REAL; RETURN (3); END_FUNCTION;", "F", "3.0"},
        {"FUNCTION F : ToyPositiveMetres; RETURN (3); END_FUNCTION;", "'TOY.TOYMETRES' IN TYPEOF(F)", "TRUE"},
        {"FUNCTION F : SET OF INTEGER; RETURN ([1, 1]); END_FUNCTION;", "SIZEOF(F)", "1"},
        {"FUNCTION F : INTEGER; RETURN ('a'); END_FUNCTION;", "F", "?"},
        {"FUNCTION F(x : AGGREGATE OF INTEGER) : INTEGER; RETURN (SIZEOF(x)); END_FUNCTION;", "F([1, 1])", "2"},
    };
    for (const AlgorithmCase& each : cases)
        EXPECT_EQ(valueWith(each.body, each.call), each.value) << each.body;
}

} // namespace

} // namespace vnifc::test
