* Distribution functions by their names in expressions. Reference values
* from mpmath at 30 digits (ncdf, gammainc, betainc, loggamma, psi).
error reldif(normal(1.5), 0.933192798731141934) > 1e-13
error reldif(normprob(1.5), 0.933192798731141934) > 1e-13
error reldif(lnnormal(-40), -804.608442013753788) > 1e-13
error reldif(lnormal(-40), -804.608442013753788) > 1e-13
error reldif(invnormal(0.933192798731141934), 1.5) > 1e-12
error reldif(tprob(7, 2.1), 0.0738711962129226910) > 1e-13
error reldif(ttail(7, 2.1), 0.0369355981064613455) > 1e-13
error reldif(invttail(7, 0.0369355981064613455), 2.1) > 1e-12
error reldif(Ftail(3, 12, 2.5), 0.109154712395006262) > 1e-13
error reldif(fprob(3, 12, 2.5), 0.109154712395006262) > 1e-13
error reldif(F(3, 12, 2.5), 0.890845287604993738) > 1e-13
error reldif(invFtail(3, 12, 0.109154712395006262), 2.5) > 1e-12
error reldif(invfprob(3, 12, 0.109154712395006262), 2.5) > 1e-12
error reldif(invF(3, 12, 0.890845287604993738), 2.5) > 1e-12
error reldif(chi2(4, 3), 0.442174599628925428) > 1e-13
error reldif(chi2tail(4, 30), 4.89443712802921261e-6) > 1e-13
error reldif(chiprob(4, 30), 4.89443712802921261e-6) > 1e-13
error reldif(invchi2(4, 0.442174599628925428), 3) > 1e-12
error reldif(invchi2tail(4, 4.89443712802921261e-6), 30) > 1e-12
error reldif(gammap(2.5, 1.2), 0.208525879405675321) > 1e-13
error reldif(invgammap(2.5, 0.208525879405675321), 1.2) > 1e-12
error reldif(dgammapdx(2.5, 1.2), 0.297839497882596672) > 1e-13
error reldif(dgammapda(2.5, 1.2), -0.215170246690680476) > 1e-12
error reldif(ibeta(2, 3, 0.25), 0.26171875) > 1e-13
error reldif(invibeta(2, 3, 0.26171875), 0.25) > 1e-12
error reldif(Binomial(10, 3, 0.2), 0.3222004736) > 1e-13
error reldif(invbinomial(10, 3, 0.3222004736), 0.2) > 1e-12
error reldif(lngamma(0.3), 1.09579799481807556) > 1e-13
error reldif(digamma(2.7), 0.796783168991141095) > 1e-13
error reldif(trigamma(0.4), 7.27535659052959672) > 1e-13
error reldif(tden(5, 1), 0.219679797350980574) > 1e-13
error reldif(betaden(2, 3, 0.25), 1.6875) > 1e-13

* missing arguments and arguments out of the domain give `.`
error !(normal(.) == . & ttail(0, 1) == . & chi2(0, 1) == . & ibeta(1, 1, 2) == .)
error !(invnormal(0) == . & invnormal(1) == . & invttail(5, 1.5) == . & F(2, 3, .a) == .)
error !(chi2tail(2, -1) == 1 & chi2(2, -1) == 0 & Ftail(2, 3, 0) == 1 & F(2, 3, 0) == 0)
error !(ttail(5, 0) == 0.5 & invttail(10, 0.5) == 0 & invgammap(3, 0) == 0 & invgammap(3, 1) == .)
error !(lngamma(1) == 0 & lngamma(2) == 0 & lngamma(0) == . & lngamma(-2) == .)

* per observation, with missing values passing through
set obs 4
generate double z = (_n - 2.5) * 2
replace z = . in 4
generate double p = normal(z)
error !(p[4] == . & reldif(p[1], 0.00134989803163009452) < 1e-13)
error !(reldif(invnormal(p[2]), z[2]) < 1e-12)
count if missing(p)
error r(N) != 1
* the non-central family and the bivariate normal under each of their
* names, against values integrated from the densities with mpmath
error reldif(nchi2(1, 0.5, 0.1), .19486848561319936484) > 1e-12
error reldif(nchi(1, 0.5, 0.1), .19486848561319936484) > 1e-12
error reldif(invnchi2(1, 0.5, .57129701038674589), 1) > 1e-11
error reldif(npnchi2(3, 1, .087873111807345429), 2) > 1e-9
error reldif(nibeta(2, 3, 4, 0.5), .37937567370804989415) > 1e-12
error reldif(invnibeta(10, 20, 0.3, .045834846913252155), 0.2) > 1e-11
error reldif(nbetaden(5, 1.5, 20, 0.8), 1.3715112843154391049) > 1e-12
error reldif(nFden(1, 10, 2, 1), .18778771078612819902) > 1e-12
error reldif(nFtail(4, 7, 9, 1), .92863096398901189083) > 1e-12
error reldif(invnFtail(4, 7, 9, .92863096398901189083), 1) > 1e-11
error reldif(binormal(2.5, 3, -0.7), .99244043664262095487) > 1e-13
error reldif(binorm(2.5, 3, -0.7), .99244043664262095487) > 1e-13
* the normal density under its dedicated names: 1/sqrt(2 pi) at 0,
* exp(-1/2)/sqrt(2 pi) = .24197072451914337 at 1
error reldif(normden(0), .39894228040143267794) > 1e-15
error reldif(normd(1), .24197072451914336999) > 1e-15
error reldif(lnnormalden(1), ln(.24197072451914336999)) > 1e-15
error reldif(lnormald(0), -.91893853320467274178) > 1e-15
error reldif(invnorm(.975), invnormal(.975)) > 0
error !(nchi2(1, -1, 1) == . & binormal(0, 0, 2) == . & normden(.) == .)
capture display normden(1, 2)
error _rc != 198
display "test completed"
