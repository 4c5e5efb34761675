#pragma once

class HostArray;

/// The builtin behind QuerySVFcnTable_ovsel: the canonical native name of input 0, as a new value in output
/// 0.
/// @pre one input and room for one output; the interpreter checks.
void AbsolutizePath(int outputCount, HostArray* outputs[], int inputCount, const HostArray* inputs[]);
