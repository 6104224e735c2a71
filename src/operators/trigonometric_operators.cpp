// Circular and hyperbolic operators and their inverses: one rule, a line a function.
#include "operators/numeric_function.h"
#include "operators/operator_tables.h"
#include "rules/circular.h"

namespace qumel {

namespace {

constexpr SQMMakerRow kTrigonometricOperators[] = {
    {OpId::Sine, &MakeOperator<CQMUnaryFunction<SQMSineRule>>},
    {OpId::Cosine, &MakeOperator<CQMUnaryFunction<SQMCosineRule>>},
    {OpId::Tangent, &MakeOperator<CQMUnaryFunction<SQMTangentRule>>},
    {OpId::Cotangent, &MakeOperator<CQMUnaryFunction<SQMCotangentRule>>},
    {OpId::Secant, &MakeOperator<CQMUnaryFunction<SQMSecantRule>>},
    {OpId::Cosecant, &MakeOperator<CQMUnaryFunction<SQMCosecantRule>>},
    {OpId::Arcsine, &MakeOperator<CQMUnaryFunction<SQMArcsineRule>>},
    {OpId::Arccosine, &MakeOperator<CQMUnaryFunction<SQMArccosineRule>>},
    {OpId::Arctangent, &MakeOperator<CQMUnaryFunction<SQMArctangentRule>>},
    {OpId::Arccotangent, &MakeOperator<CQMUnaryFunction<SQMArccotangentRule>>},
    {OpId::Arcsecant, &MakeOperator<CQMUnaryFunction<SQMArcsecantRule>>},
    {OpId::Arccosecant, &MakeOperator<CQMUnaryFunction<SQMArccosecantRule>>},
    {OpId::Hypersine, &MakeOperator<CQMUnaryFunction<SQMHypersineRule>>},
    {OpId::Hypercosine, &MakeOperator<CQMUnaryFunction<SQMHypercosineRule>>},
    {OpId::Hypertangent, &MakeOperator<CQMUnaryFunction<SQMHypertangentRule>>},
    {OpId::Hypercotangent, &MakeOperator<CQMUnaryFunction<SQMHypercotangentRule>>},
    {OpId::Hypersecant, &MakeOperator<CQMUnaryFunction<SQMHypersecantRule>>},
    {OpId::Hypercosecant, &MakeOperator<CQMUnaryFunction<SQMHypercosecantRule>>},
    {OpId::Archypersine, &MakeOperator<CQMUnaryFunction<SQMArchypersineRule>>},
    {OpId::Archypercosine, &MakeOperator<CQMUnaryFunction<SQMArchypercosineRule>>},
    {OpId::Archypertangent, &MakeOperator<CQMUnaryFunction<SQMArchypertangentRule>>},
    {OpId::Archypercotangent, &MakeOperator<CQMUnaryFunction<SQMArchypercotangentRule>>},
    {OpId::Archypersecant, &MakeOperator<CQMUnaryFunction<SQMArchypersecantRule>>},
    {OpId::Archypercosecant, &MakeOperator<CQMUnaryFunction<SQMArchypercosecantRule>>},
    {OpId::ShortArcsine, &MakeOperator<CQMUnaryFunction<SQMArcsineRule>>},
    {OpId::ShortArccosine, &MakeOperator<CQMUnaryFunction<SQMArccosineRule>>},
    {OpId::ShortArctangent, &MakeOperator<CQMUnaryFunction<SQMArctangentRule>>},
    {OpId::ShortArccotangent, &MakeOperator<CQMUnaryFunction<SQMArccotangentRule>>},
    {OpId::ShortArcsecant, &MakeOperator<CQMUnaryFunction<SQMArcsecantRule>>},
    {OpId::ShortArccosecant, &MakeOperator<CQMUnaryFunction<SQMArccosecantRule>>},
    {OpId::ShortArchypersine, &MakeOperator<CQMUnaryFunction<SQMArchypersineRule>>},
    {OpId::ShortArchypercosine, &MakeOperator<CQMUnaryFunction<SQMArchypercosineRule>>},
    {OpId::ShortArchypertangent, &MakeOperator<CQMUnaryFunction<SQMArchypertangentRule>>},
    {OpId::ShortArchypercotangent, &MakeOperator<CQMUnaryFunction<SQMArchypercotangentRule>>},
    {OpId::ShortArchypersecant, &MakeOperator<CQMUnaryFunction<SQMArchypersecantRule>>},
    {OpId::ShortArchypercosecant, &MakeOperator<CQMUnaryFunction<SQMArchypercosecantRule>>},
};

}  // namespace

MakerTable TrigonometricOperators() { return kTrigonometricOperators; }

}  // namespace qumel
