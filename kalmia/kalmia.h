#pragma once

// Every public header.

#include "kalmia/support/CString.h"
#include "kalmia/support/CompareWithTolerance.h"
#include "kalmia/support/ConfigurationSection.h"
#include "kalmia/support/Exception.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/MD5.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/TempFile.h"
#include "kalmia/support/UserComm.h"
#include "kalmia/support/VexPointer.h"
#include "kalmia/support/VexStream.h"
#include "kalmia/support/VexStreamSource.h"
#include "kalmia/support/VexString.h"

#include "kalmia/containers/BoolVector.h"
#include "kalmia/containers/IntPool.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCDataVectorUtilities.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/containers/NCMatUtilities.h"
#include "kalmia/containers/NCStringVector.h"
#include "kalmia/containers/NDimensionalMatrix.h"

#include "kalmia/kernels/MatrixColumnVectorOperationThread.h"
#include "kalmia/kernels/NCSVD.h"
#include "kalmia/kernels/ThreadingControl.h"

#include "kalmia/statistics/ControlChart.h"
#include "kalmia/statistics/FrequencyHistogram.h"
#include "kalmia/statistics/OneDimMinimum.h"
#include "kalmia/statistics/Sta.h"

#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPCAPred.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/pcapls/ScoreEstimator.h"

#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "kalmia/opls/OPLSCrossvalidationData.h"

#include "kalmia/o2pls/PLSMissingValueEstimator.h"

#include "kalmia/cluster/DendroGramNode.h"
