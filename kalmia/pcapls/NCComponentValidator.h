#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/Export.h"

/// A rule that tells a loop over components whether to compute another one, so that the loop need not know the rule:
///
///   validator.SetPCAModel(&model);
///   while (validator.IsValid()) { model.NextComponent(...); model.CalculateResiduals(); }
///   validator.Done();
class KALMIA_EXPORT NCComponentValidator {
 public:
  virtual ~NCComponentValidator();
  virtual bool IsPreComponentValidator() = 0;  ///< true: ask IsValid before a component is computed; false: after
  virtual bool IsValid() = 0;
  virtual void Done();                         ///< the caller has finished; does nothing here
};

/// A rule about a PCA model. It does not own the model, which may be set later, or be null.
class KALMIA_EXPORT PCAComponentValidator : public NCComponentValidator {
 public:
  explicit PCAComponentValidator(NCPCA* model) : model_(model) {}
  virtual void SetPCAModel(NCPCA* model);

 protected:
  NCPCA* model_;
};

/// Asks for another component while the model's working matrix has more than `fraction` of the sum of squares that it
/// had when the model was set.
class KALMIA_EXPORT PCA_SS_ComponentValidator : public PCAComponentValidator {
 public:
  explicit PCA_SS_ComponentValidator(NCPCA* model = nullptr, float fraction = 0.001F);

  bool IsPreComponentValidator() override;     ///< true
  /// fraction < SS / SS at the start, all in float. False without a model, and if the sum of squares at the start is
  /// at or below 1e-30 or either is missing.
  bool IsValid() override;
  /// Starts anew with this model and forgets the former one. Throws NCError if the sum of squares is not finite as a
  /// float (the constructor does not check); IsValid is then false for this model.
  void SetPCAModel(NCPCA* model) override;

 private:
  float fraction_;
  float initialSS_;                            ///< missing without a model
};
