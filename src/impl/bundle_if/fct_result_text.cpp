// Texts of the host's function results.
#include "impl/bundle_if/fct_result_text.h"

namespace motion::kavo {

const char* getResultText(core::FctResult result) noexcept {
  switch (result) {
    using enum core::FctResult;
    case NotOkay:
      return "not okay";
    case ExecutionError:
      return "error in execution";
    case PreparationError:
      return "error in preparation";
    case ObjectNotFound:
      return "requested motion object does not exist";
    case OutOfMemory:
      return "out of memory";
    case DivisionByZero:
      return "division by zero";
    case InvalidNumber:
      return "invalid number";
    case Overflow:
      return "overflow";
    case UnknownFpuError:
      return "unknown FPU error";
    case WrongMotionState:
      return "action not possible in actual motion state";
    case InvalidParameter:
      return "invalid parameter for function call";
    case NotSupportedByObject:
      return "not supported by the requested motion object";
    case TooManyCommands:
      return "maximal commands exceeded";
    case ActiveCommand:
      return "function not possible with active command";
    case NoActiveTransformation:
      return "no active transformation available";
    case TransformationNotImplemented:
      return "this transformation function is not implemented";
    case PositionUnreachable:
      return "given position is unreachable";
    case WrongMemorySize:
      return "memory size parameter is not correct";
    case WrongKinConfiguration:
      return "incorrect kinematic configuration";
    default:
      return "unknown error";
  }
}

}  // namespace motion::kavo
