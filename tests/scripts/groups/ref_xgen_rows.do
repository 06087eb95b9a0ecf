* expected values from tests/reference/groups_ref.py (pandas, numpy)
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
generate double z = cond(h == 0, ., g*1.5)
generate long obs = _n
xgenerate double rm = rowmean(y z w)
xgenerate double rt = rowtotal(y z w)
xgenerate double rmin = rowmin(y z w)
xgenerate double rmax = rowmax(y z w)
xgenerate rmiss = rowmiss(y z w)
xgenerate rnm = rownonmiss(y z w)
xgenerate double rsd = rowsd(y z w)
xgenerate ac = anycount(g h w), values(1 2)
assert reldif(rm, 5.428571428571428) < 1e-13 if obs == 1
assert reldif(rt, 16.285714285714285) < 1e-13 if obs == 1
assert reldif(rmin, 2.0) < 1e-13 if obs == 1
assert reldif(rmax, 9.0) < 1e-13 if obs == 1
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 1
assert reldif(rsd, 3.502185906323218) < 1e-12 if obs == 1
assert reldif(rm, 7.023809523809523) < 1e-13 if obs == 2
assert reldif(rt, 21.07142857142857) < 1e-13 if obs == 2
assert reldif(rmin, 3.0) < 1e-13 if obs == 2
assert reldif(rmax, 10.571428571428571) < 1e-13 if obs == 2
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 2
assert reldif(rsd, 3.808109856644384) < 1e-12 if obs == 2
assert reldif(rm, 2.7142857142857144) < 1e-13 if obs == 3
assert reldif(rt, 5.428571428571429) < 1e-13 if obs == 3
assert reldif(rmin, 1.4285714285714286) < 1e-13 if obs == 3
assert reldif(rmax, 4.0) < 1e-13 if obs == 3
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 3
assert reldif(rsd, 1.8182745801939793) < 1e-12 if obs == 3
assert reldif(rm, 4.071428571428572) < 1e-13 if obs == 4
assert reldif(rt, 12.214285714285715) < 1e-13 if obs == 4
assert reldif(rmin, 1.0) < 1e-13 if obs == 4
assert reldif(rmax, 6.714285714285714) < 1e-13 if obs == 4
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 4
assert reldif(rsd, 2.881149147156958) < 1e-12 if obs == 4
assert reldif(rm, 5.666666666666667) < 1e-13 if obs == 5
assert reldif(rt, 17.0) < 1e-13 if obs == 5
assert reldif(rmin, 2.0) < 1e-13 if obs == 5
assert reldif(rmax, 12.0) < 1e-13 if obs == 5
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 5
assert reldif(rsd, 5.507570547286102) < 1e-12 if obs == 5
assert reldif(rm, 2.928571428571429) < 1e-13 if obs == 6
assert reldif(rt, 5.857142857142858) < 1e-13 if obs == 6
assert reldif(rmin, 2.857142857142857) < 1e-13 if obs == 6
assert reldif(rmax, 3.0) < 1e-13 if obs == 6
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 6
assert reldif(rsd, 0.10101525445522103) < 1e-12 if obs == 6
assert reldif(rm, 4.0476190476190474) < 1e-13 if obs == 7
assert reldif(rt, 12.142857142857142) < 1e-13 if obs == 7
assert reldif(rmin, 0.0) < 1e-13 if obs == 7
assert reldif(rmax, 8.142857142857142) < 1e-13 if obs == 7
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 7
assert reldif(rsd, 4.071637421543942) < 1e-12 if obs == 7
assert reldif(rm, 7.80952380952381) < 1e-13 if obs == 8
assert reldif(rt, 23.42857142857143) < 1e-13 if obs == 8
assert reldif(rmin, 1.0) < 1e-13 if obs == 8
assert reldif(rmax, 13.428571428571429) < 1e-13 if obs == 8
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 8
assert reldif(rsd, 6.299227897833475) < 1e-12 if obs == 8
assert reldif(rm, 3.142857142857143) < 1e-13 if obs == 9
assert reldif(rt, 6.285714285714286) < 1e-13 if obs == 9
assert reldif(rmin, 2.0) < 1e-13 if obs == 9
assert reldif(rmax, 4.285714285714286) < 1e-13 if obs == 9
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 9
assert reldif(rsd, 1.616244071283537) < 1e-12 if obs == 9
assert reldif(rm, 6.19047619047619) < 1e-13 if obs == 10
assert reldif(rt, 18.57142857142857) < 1e-13 if obs == 10
assert reldif(rmin, 3.0) < 1e-13 if obs == 10
assert reldif(rmax, 9.571428571428571) < 1e-13 if obs == 10
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 10
assert reldif(rsd, 3.2898524665554048) < 1e-12 if obs == 10
assert reldif(rm, 2.9761904761904763) < 1e-13 if obs == 11
assert reldif(rt, 8.928571428571429) < 1e-13 if obs == 11
assert reldif(rmin, 0.42857142857142855) < 1e-13 if obs == 11
assert reldif(rmax, 4.5) < 1e-13 if obs == 11
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 11
assert reldif(rsd, 2.220421606101764) < 1e-12 if obs == 11
assert reldif(rm, 3.357142857142857) < 1e-13 if obs == 12
assert reldif(rt, 6.714285714285714) < 1e-13 if obs == 12
assert reldif(rmin, 1.0) < 1e-13 if obs == 12
assert reldif(rmax, 5.714285714285714) < 1e-13 if obs == 12
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 12
assert reldif(rsd, 3.333503397022296) < 1e-12 if obs == 12
assert reldif(rm, 4.833333333333333) < 1e-13 if obs == 13
assert reldif(rt, 14.5) < 1e-13 if obs == 13
assert reldif(rmin, 1.5) < 1e-13 if obs == 13
assert reldif(rmax, 11.0) < 1e-13 if obs == 13
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 13
assert reldif(rsd, 5.346338310781813) < 1e-12 if obs == 13
assert reldif(rm, 1.6190476190476193) < 1e-13 if obs == 14
assert reldif(rt, 4.857142857142858) < 1e-13 if obs == 14
assert reldif(rmin, 0.0) < 1e-13 if obs == 14
assert reldif(rmax, 3.0) < 1e-13 if obs == 14
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 14
assert reldif(rsd, 1.5141060091032996) < 1e-12 if obs == 14
assert reldif(rm, 5.571428571428571) < 1e-13 if obs == 15
assert reldif(rt, 11.142857142857142) < 1e-13 if obs == 15
assert reldif(rmin, 4.0) < 1e-13 if obs == 15
assert reldif(rmax, 7.142857142857143) < 1e-13 if obs == 15
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 15
assert reldif(rsd, 2.222335598014864) < 1e-12 if obs == 15
assert reldif(rm, 6.976190476190477) < 1e-13 if obs == 16
assert reldif(rt, 20.92857142857143) < 1e-13 if obs == 16
assert reldif(rmin, 1.0) < 1e-13 if obs == 16
assert reldif(rmax, 12.428571428571429) < 1e-13 if obs == 16
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 16
assert reldif(rsd, 5.732263386954142) < 1e-12 if obs == 16
assert reldif(rm, 4.0) < 1e-13 if obs == 17
assert reldif(rt, 8.0) < 1e-13 if obs == 17
assert reldif(rmin, 2.0) < 1e-13 if obs == 17
assert reldif(rmax, 6.0) < 1e-13 if obs == 17
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 17
assert reldif(rsd, 2.8284271247461903) < 1e-12 if obs == 17
assert reldif(rm, 5.785714285714286) < 1e-13 if obs == 18
assert reldif(rt, 11.571428571428571) < 1e-13 if obs == 18
assert reldif(rmin, 3.0) < 1e-13 if obs == 18
assert reldif(rmax, 8.571428571428571) < 1e-13 if obs == 18
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 18
assert reldif(rsd, 3.9395949237536216) < 1e-12 if obs == 18
assert reldif(rm, 6.9523809523809526) < 1e-13 if obs == 19
assert reldif(rt, 20.857142857142858) < 1e-13 if obs == 19
assert reldif(rmin, 3.0) < 1e-13 if obs == 19
assert reldif(rmax, 13.857142857142858) < 1e-13 if obs == 19
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 19
assert reldif(rsd, 6.000566866645887) < 1e-12 if obs == 19
assert reldif(rm, 2.4047619047619047) < 1e-13 if obs == 20
assert reldif(rt, 7.214285714285714) < 1e-13 if obs == 20
assert reldif(rmin, 1.0) < 1e-13 if obs == 20
assert reldif(rmax, 4.714285714285714) < 1e-13 if obs == 20
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 20
assert reldif(rsd, 2.0156699060282732) < 1e-12 if obs == 20
assert reldif(rm, 6.0) < 1e-13 if obs == 21
assert reldif(rt, 12.0) < 1e-13 if obs == 21
assert reldif(rmin, 2.0) < 1e-13 if obs == 21
assert reldif(rmax, 10.0) < 1e-13 if obs == 21
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 21
assert reldif(rsd, 5.656854249492381) < 1e-12 if obs == 21
assert reldif(rm, 4.285714285714286) < 1e-13 if obs == 22
assert reldif(rt, 12.857142857142858) < 1e-13 if obs == 22
assert reldif(rmin, 0.8571428571428571) < 1e-13 if obs == 22
assert reldif(rmax, 9.0) < 1e-13 if obs == 22
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 22
assert reldif(rsd, 4.2209390579126165) < 1e-12 if obs == 22
assert reldif(rm, 5.8809523809523805) < 1e-13 if obs == 23
assert reldif(rt, 17.642857142857142) < 1e-13 if obs == 23
assert reldif(rmin, 4.0) < 1e-13 if obs == 23
assert reldif(rmax, 7.5) < 1e-13 if obs == 23
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 23
assert reldif(rsd, 1.7646375203512172) < 1e-12 if obs == 23
assert reldif(rm, 6.214285714285714) < 1e-13 if obs == 24
assert reldif(rt, 12.428571428571429) < 1e-13 if obs == 24
assert reldif(rmin, 1.0) < 1e-13 if obs == 24
assert reldif(rmax, 11.428571428571429) < 1e-13 if obs == 24
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 24
assert reldif(rsd, 7.374113575231139) < 1e-12 if obs == 24
assert reldif(rm, 2.9285714285714284) < 1e-13 if obs == 25
assert reldif(rt, 8.785714285714285) < 1e-13 if obs == 25
assert reldif(rmin, 2.0) < 1e-13 if obs == 25
assert reldif(rmax, 4.5) < 1e-13 if obs == 25
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 25
assert reldif(rsd, 1.3683745757620012) < 1e-12 if obs == 25
assert reldif(rm, 4.523809523809524) < 1e-13 if obs == 26
assert reldif(rt, 13.571428571428571) < 1e-13 if obs == 26
assert reldif(rmin, 3.0) < 1e-13 if obs == 26
assert reldif(rmax, 7.571428571428571) < 1e-13 if obs == 26
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 26
assert reldif(rsd, 2.639315516295432) < 1e-12 if obs == 26
assert reldif(rm, 8.428571428571429) < 1e-13 if obs == 27
assert reldif(rt, 16.857142857142858) < 1e-13 if obs == 27
assert reldif(rmin, 4.0) < 1e-13 if obs == 27
assert reldif(rmax, 12.857142857142858) < 1e-13 if obs == 27
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 27
assert reldif(rsd, 6.262945776223707) < 1e-12 if obs == 27
assert reldif(rm, 1.5714285714285714) < 1e-13 if obs == 28
assert reldif(rt, 4.714285714285714) < 1e-13 if obs == 28
assert reldif(rmin, 0.0) < 1e-13 if obs == 28
assert reldif(rmax, 3.7142857142857144) < 1e-13 if obs == 28
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 28
assert reldif(rsd, 1.9219462924391018) < 1e-12 if obs == 28
assert reldif(rm, 6.666666666666667) < 1e-13 if obs == 29
assert reldif(rt, 20.0) < 1e-13 if obs == 29
assert reldif(rmin, 2.0) < 1e-13 if obs == 29
assert reldif(rmax, 9.0) < 1e-13 if obs == 29
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 29
assert reldif(rsd, 4.041451884327381) < 1e-12 if obs == 29
assert reldif(rm, 8.642857142857142) < 1e-13 if obs == 30
assert reldif(rt, 17.285714285714285) < 1e-13 if obs == 30
assert reldif(rmin, 3.0) < 1e-13 if obs == 30
assert reldif(rmax, 14.285714285714286) < 1e-13 if obs == 30
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 30
assert reldif(rsd, 7.980205101962466) < 1e-12 if obs == 30
assert reldif(rm, 5.0476190476190474) < 1e-13 if obs == 31
assert reldif(rt, 15.142857142857142) < 1e-13 if obs == 31
assert reldif(rmin, 4.0) < 1e-13 if obs == 31
assert reldif(rmax, 6.0) < 1e-13 if obs == 31
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 31
assert reldif(rsd, 1.0033955955097846) < 1e-12 if obs == 31
assert reldif(rm, 5.309523809523809) < 1e-13 if obs == 32
assert reldif(rt, 15.928571428571429) < 1e-13 if obs == 32
assert reldif(rmin, 1.0) < 1e-13 if obs == 32
assert reldif(rmax, 10.428571428571429) < 1e-13 if obs == 32
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 32
assert reldif(rsd, 4.766129078671477) < 1e-12 if obs == 32
assert reldif(rm, 1.6428571428571428) < 1e-13 if obs == 33
assert reldif(rt, 3.2857142857142856) < 1e-13 if obs == 33
assert reldif(rmin, 1.2857142857142858) < 1e-13 if obs == 33
assert reldif(rmax, 2.0) < 1e-13 if obs == 33
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 33
assert reldif(rsd, 0.5050762722761053) < 1e-12 if obs == 33
assert reldif(rm, 2.25) < 1e-13 if obs == 34
assert reldif(rt, 4.5) < 1e-13 if obs == 34
assert reldif(rmin, 1.5) < 1e-13 if obs == 34
assert reldif(rmax, 3.0) < 1e-13 if obs == 34
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 34
assert reldif(rsd, 1.0606601717798212) < 1e-12 if obs == 34
assert reldif(rm, 5.285714285714286) < 1e-13 if obs == 35
assert reldif(rt, 15.857142857142858) < 1e-13 if obs == 35
assert reldif(rmin, 0.0) < 1e-13 if obs == 35
assert reldif(rmax, 11.857142857142858) < 1e-13 if obs == 35
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 35
assert reldif(rsd, 6.032226380204975) < 1e-12 if obs == 35
assert reldif(rm, 1.8571428571428572) < 1e-13 if obs == 36
assert reldif(rt, 3.7142857142857144) < 1e-13 if obs == 36
assert reldif(rmin, 1.0) < 1e-13 if obs == 36
assert reldif(rmax, 2.7142857142857144) < 1e-13 if obs == 36
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 36
assert reldif(rsd, 1.212183053462653) < 1e-12 if obs == 36
assert reldif(rm, 5.833333333333333) < 1e-13 if obs == 37
assert reldif(rt, 17.5) < 1e-13 if obs == 37
assert reldif(rmin, 2.0) < 1e-13 if obs == 37
assert reldif(rmax, 8.0) < 1e-13 if obs == 37
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 37
assert reldif(rsd, 3.3291640592396967) < 1e-12 if obs == 37
assert reldif(rm, 7.428571428571428) < 1e-13 if obs == 38
assert reldif(rt, 22.285714285714285) < 1e-13 if obs == 38
assert reldif(rmin, 3.0) < 1e-13 if obs == 38
assert reldif(rmax, 13.285714285714286) < 1e-13 if obs == 38
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 38
assert reldif(rsd, 5.2895738804496055) < 1e-12 if obs == 38
assert reldif(rm, 4.071428571428571) < 1e-13 if obs == 39
assert reldif(rt, 8.142857142857142) < 1e-13 if obs == 39
assert reldif(rmin, 4.0) < 1e-13 if obs == 39
assert reldif(rmax, 4.142857142857143) < 1e-13 if obs == 39
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 39
assert reldif(rsd, 0.10101525445522135) < 1e-12 if obs == 39
assert reldif(rm, 4.476190476190476) < 1e-13 if obs == 40
assert reldif(rt, 13.428571428571429) < 1e-13 if obs == 40
assert reldif(rmin, 1.0) < 1e-13 if obs == 40
assert reldif(rmax, 9.428571428571429) < 1e-13 if obs == 40
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 40
assert reldif(rsd, 4.4039252744715425) < 1e-12 if obs == 40
assert reldif(rm, 1.2619047619047619) < 1e-13 if obs == 41
assert reldif(rt, 3.7857142857142856) < 1e-13 if obs == 41
assert reldif(rmin, 0.2857142857142857) < 1e-13 if obs == 41
assert reldif(rmax, 2.0) < 1e-13 if obs == 41
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 41
assert reldif(rsd, 0.8815956467416008) < 1e-12 if obs == 41
assert reldif(rm, 4.285714285714286) < 1e-13 if obs == 42
assert reldif(rt, 8.571428571428571) < 1e-13 if obs == 42
assert reldif(rmin, 3.0) < 1e-13 if obs == 42
assert reldif(rmax, 5.571428571428571) < 1e-13 if obs == 42
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 42
assert reldif(rsd, 1.818274580193979) < 1e-12 if obs == 42
assert reldif(rm, 7.9523809523809526) < 1e-13 if obs == 43
assert reldif(rt, 23.857142857142858) < 1e-13 if obs == 43
assert reldif(rmin, 4.0) < 1e-13 if obs == 43
assert reldif(rmax, 10.857142857142858) < 1e-13 if obs == 43
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 43
assert reldif(rsd, 3.546580225021987) < 1e-12 if obs == 43
assert reldif(rm, 3.4047619047619047) < 1e-13 if obs == 44
assert reldif(rt, 10.214285714285714) < 1e-13 if obs == 44
assert reldif(rmin, 1.0) < 1e-13 if obs == 44
assert reldif(rmax, 7.5) < 1e-13 if obs == 44
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 44
assert reldif(rsd, 3.564517121985132) < 1e-12 if obs == 44
assert reldif(rm, 4.5) < 1e-13 if obs == 45
assert reldif(rt, 9.0) < 1e-13 if obs == 45
assert reldif(rmin, 2.0) < 1e-13 if obs == 45
assert reldif(rmax, 7.0) < 1e-13 if obs == 45
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 45
assert reldif(rsd, 3.5355339059327378) < 1e-12 if obs == 45
assert reldif(rm, 6.595238095238095) < 1e-13 if obs == 46
assert reldif(rt, 19.785714285714285) < 1e-13 if obs == 46
assert reldif(rmin, 3.0) < 1e-13 if obs == 46
assert reldif(rmax, 12.285714285714286) < 1e-13 if obs == 46
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 46
assert reldif(rsd, 4.984840965946889) < 1e-12 if obs == 46
assert reldif(rm, 3.380952380952381) < 1e-13 if obs == 47
assert reldif(rt, 10.142857142857142) < 1e-13 if obs == 47
assert reldif(rmin, 3.0) < 1e-13 if obs == 47
assert reldif(rmax, 4.0) < 1e-13 if obs == 47
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 47
assert reldif(rsd, 0.5408484138857403) < 1e-12 if obs == 47
assert reldif(rm, 4.714285714285714) < 1e-13 if obs == 48
assert reldif(rt, 9.428571428571429) < 1e-13 if obs == 48
assert reldif(rmin, 1.0) < 1e-13 if obs == 48
assert reldif(rmax, 8.428571428571429) < 1e-13 if obs == 48
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 48
assert reldif(rsd, 5.252793231671496) < 1e-12 if obs == 48
assert reldif(rm, 5.238095238095238) < 1e-13 if obs == 49
assert reldif(rt, 15.714285714285714) < 1e-13 if obs == 49
assert reldif(rmin, 0.0) < 1e-13 if obs == 49
assert reldif(rmax, 13.714285714285714) < 1e-13 if obs == 49
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 49
assert reldif(rsd, 7.408397515083582) < 1e-12 if obs == 49
assert reldif(rm, 5.523809523809523) < 1e-13 if obs == 50
assert reldif(rt, 16.57142857142857) < 1e-13 if obs == 50
assert reldif(rmin, 3.0) < 1e-13 if obs == 50
assert reldif(rmax, 9.0) < 1e-13 if obs == 50
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 50
assert reldif(rsd, 3.1113135664608826) < 1e-12 if obs == 50
assert reldif(rm, 4.0) < 1e-13 if obs == 51
assert reldif(rt, 4.0) < 1e-13 if obs == 51
assert reldif(rmin, 4.0) < 1e-13 if obs == 51
assert reldif(rmax, 4.0) < 1e-13 if obs == 51
assert rmiss == 2 & rnm == 1 & ac == 0 if obs == 51
assert missing(rsd) if obs == 51
assert reldif(rm, 2.5714285714285716) < 1e-13 if obs == 52
assert reldif(rt, 7.714285714285714) < 1e-13 if obs == 52
assert reldif(rmin, 0.7142857142857143) < 1e-13 if obs == 52
assert reldif(rmax, 6.0) < 1e-13 if obs == 52
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 52
assert reldif(rsd, 2.97266457809783) < 1e-12 if obs == 52
assert reldif(rm, 4.166666666666667) < 1e-13 if obs == 53
assert reldif(rt, 12.5) < 1e-13 if obs == 53
assert reldif(rmin, 2.0) < 1e-13 if obs == 53
assert reldif(rmax, 6.0) < 1e-13 if obs == 53
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 53
assert reldif(rsd, 2.0207259421636903) < 1e-12 if obs == 53
assert reldif(rm, 7.142857142857143) < 1e-13 if obs == 54
assert reldif(rt, 14.285714285714286) < 1e-13 if obs == 54
assert reldif(rmin, 3.0) < 1e-13 if obs == 54
assert reldif(rmax, 11.285714285714286) < 1e-13 if obs == 54
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 54
assert reldif(rsd, 5.858884758402823) < 1e-12 if obs == 54
assert reldif(rm, 2.5476190476190474) < 1e-13 if obs == 55
assert reldif(rt, 7.642857142857142) < 1e-13 if obs == 55
assert reldif(rmin, 1.5) < 1e-13 if obs == 55
assert reldif(rmax, 4.0) < 1e-13 if obs == 55
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 55
assert reldif(rsd, 1.2982196076395796) < 1e-12 if obs == 55
assert reldif(rm, 2.8095238095238098) < 1e-13 if obs == 56
assert reldif(rt, 8.428571428571429) < 1e-13 if obs == 56
assert reldif(rmin, 0.0) < 1e-13 if obs == 56
assert reldif(rmax, 7.428571428571429) < 1e-13 if obs == 56
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 56
assert reldif(rsd, 4.0313398120565465) < 1e-12 if obs == 56
assert reldif(rm, 7.357142857142857) < 1e-13 if obs == 57
assert reldif(rt, 14.714285714285714) < 1e-13 if obs == 57
assert reldif(rmin, 2.0) < 1e-13 if obs == 57
assert reldif(rmax, 12.714285714285714) < 1e-13 if obs == 57
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 57
assert reldif(rsd, 7.57614408414158) < 1e-12 if obs == 57
assert reldif(rm, 4.690476190476191) < 1e-13 if obs == 58
assert reldif(rt, 14.071428571428571) < 1e-13 if obs == 58
assert reldif(rmin, 3.0) < 1e-13 if obs == 58
assert reldif(rmax, 7.5) < 1e-13 if obs == 58
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 58
assert reldif(rsd, 2.449836868093896) < 1e-12 if obs == 58
assert reldif(rm, 6.285714285714286) < 1e-13 if obs == 59
assert reldif(rt, 18.857142857142858) < 1e-13 if obs == 59
assert reldif(rmin, 4.0) < 1e-13 if obs == 59
assert reldif(rmax, 8.857142857142858) < 1e-13 if obs == 59
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 59
assert reldif(rsd, 2.4411439272335804) < 1e-12 if obs == 59
assert reldif(rm, 7.571428571428571) < 1e-13 if obs == 60
assert reldif(rt, 15.142857142857142) < 1e-13 if obs == 60
assert reldif(rmin, 1.0) < 1e-13 if obs == 60
assert reldif(rmax, 14.142857142857142) < 1e-13 if obs == 60
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 60
assert reldif(rsd, 9.293403409880339) < 1e-12 if obs == 60
assert reldif(rm, 3.3333333333333335) < 1e-13 if obs == 61
assert reldif(rt, 10.0) < 1e-13 if obs == 61
assert reldif(rmin, 2.0) < 1e-13 if obs == 61
assert reldif(rmax, 5.0) < 1e-13 if obs == 61
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 61
assert reldif(rsd, 1.5275252316519465) < 1e-12 if obs == 61
assert reldif(rm, 4.928571428571429) < 1e-13 if obs == 62
assert reldif(rt, 14.785714285714286) < 1e-13 if obs == 62
assert reldif(rmin, 1.5) < 1e-13 if obs == 62
assert reldif(rmax, 10.285714285714286) < 1e-13 if obs == 62
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 62
assert reldif(rsd, 4.699652614170281) < 1e-12 if obs == 62
assert reldif(rm, 2.571428571428571) < 1e-13 if obs == 63
assert reldif(rt, 5.142857142857142) < 1e-13 if obs == 63
assert reldif(rmin, 1.1428571428571428) < 1e-13 if obs == 63
assert reldif(rmax, 4.0) < 1e-13 if obs == 63
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 63
assert reldif(rsd, 2.0203050891044216) < 1e-12 if obs == 63
assert reldif(rm, 5.476190476190477) < 1e-13 if obs == 64
assert reldif(rt, 16.42857142857143) < 1e-13 if obs == 64
assert reldif(rmin, 1.0) < 1e-13 if obs == 64
assert reldif(rmax, 9.0) < 1e-13 if obs == 64
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 64
assert reldif(rsd, 4.08414888426506) < 1e-12 if obs == 64
assert reldif(rm, 7.071428571428572) < 1e-13 if obs == 65
assert reldif(rt, 21.214285714285715) < 1e-13 if obs == 65
assert reldif(rmin, 2.0) < 1e-13 if obs == 65
assert reldif(rmax, 11.714285714285714) < 1e-13 if obs == 65
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 65
assert reldif(rsd, 4.871302889036432) < 1e-12 if obs == 65
assert reldif(rm, 2.7857142857142856) < 1e-13 if obs == 66
assert reldif(rt, 5.571428571428571) < 1e-13 if obs == 66
assert reldif(rmin, 2.5714285714285716) < 1e-13 if obs == 66
assert reldif(rmax, 3.0) < 1e-13 if obs == 66
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 66
assert reldif(rsd, 0.3030457633656631) < 1e-12 if obs == 66
assert reldif(rm, 5.4523809523809526) < 1e-13 if obs == 67
assert reldif(rt, 16.357142857142858) < 1e-13 if obs == 67
assert reldif(rmin, 4.0) < 1e-13 if obs == 67
assert reldif(rmax, 7.857142857142857) < 1e-13 if obs == 67
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 67
assert reldif(rsd, 2.097536618022574) < 1e-12 if obs == 67
assert reldif(rm, 2.0) < 1e-13 if obs == 68
assert reldif(rt, 4.0) < 1e-13 if obs == 68
assert reldif(rmin, 1.0) < 1e-13 if obs == 68
assert reldif(rmax, 3.0) < 1e-13 if obs == 68
assert rmiss == 1 & rnm == 2 & ac == 3 if obs == 68
assert reldif(rsd, 1.4142135623730951) < 1e-12 if obs == 68
assert reldif(rm, 3.0) < 1e-13 if obs == 69
assert reldif(rt, 6.0) < 1e-13 if obs == 69
assert reldif(rmin, 2.0) < 1e-13 if obs == 69
assert reldif(rmax, 4.0) < 1e-13 if obs == 69
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 69
assert reldif(rsd, 1.4142135623730951) < 1e-12 if obs == 69
assert reldif(rm, 4.095238095238096) < 1e-13 if obs == 70
assert reldif(rt, 12.285714285714286) < 1e-13 if obs == 70
assert reldif(rmin, 0.0) < 1e-13 if obs == 70
assert reldif(rmax, 9.285714285714286) < 1e-13 if obs == 70
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 70
assert reldif(rsd, 4.738753244570261) < 1e-12 if obs == 70
assert reldif(rm, 4.3809523809523805) < 1e-13 if obs == 71
assert reldif(rt, 13.142857142857142) < 1e-13 if obs == 71
assert reldif(rmin, 0.14285714285714285) < 1e-13 if obs == 71
assert reldif(rmax, 9.0) < 1e-13 if obs == 71
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 71
assert reldif(rsd, 4.440843212203529) < 1e-12 if obs == 71
assert reldif(rm, 3.2142857142857144) < 1e-13 if obs == 72
assert reldif(rt, 6.428571428571429) < 1e-13 if obs == 72
assert reldif(rmin, 1.0) < 1e-13 if obs == 72
assert reldif(rmax, 5.428571428571429) < 1e-13 if obs == 72
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 72
assert reldif(rsd, 3.1314728881118534) < 1e-12 if obs == 72
assert reldif(rm, 6.238095238095238) < 1e-13 if obs == 73
assert reldif(rt, 18.714285714285715) < 1e-13 if obs == 73
assert reldif(rmin, 2.0) < 1e-13 if obs == 73
assert reldif(rmax, 10.714285714285714) < 1e-13 if obs == 73
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 73
assert reldif(rsd, 4.36201912929709) < 1e-12 if obs == 73
assert reldif(rm, 3.0238095238095237) < 1e-13 if obs == 74
assert reldif(rt, 9.071428571428571) < 1e-13 if obs == 74
assert reldif(rmin, 1.5714285714285714) < 1e-13 if obs == 74
assert reldif(rmax, 4.5) < 1e-13 if obs == 74
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 74
assert reldif(rsd, 1.4644308871125504) < 1e-12 if obs == 74
assert reldif(rm, 5.428571428571429) < 1e-13 if obs == 75
assert reldif(rt, 10.857142857142858) < 1e-13 if obs == 75
assert reldif(rmin, 4.0) < 1e-13 if obs == 75
assert reldif(rmax, 6.857142857142857) < 1e-13 if obs == 75
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 75
assert reldif(rsd, 2.020305089104421) < 1e-12 if obs == 75
assert reldif(rm, 4.8809523809523805) < 1e-13 if obs == 76
assert reldif(rt, 14.642857142857142) < 1e-13 if obs == 76
assert reldif(rmin, 1.0) < 1e-13 if obs == 76
assert reldif(rmax, 12.142857142857142) < 1e-13 if obs == 76
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 76
assert reldif(rsd, 6.2939610404125705) < 1e-12 if obs == 76
assert reldif(rm, 1.6666666666666667) < 1e-13 if obs == 77
assert reldif(rt, 5.0) < 1e-13 if obs == 77
assert reldif(rmin, 0.0) < 1e-13 if obs == 77
assert reldif(rmax, 3.0) < 1e-13 if obs == 77
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 77
assert reldif(rsd, 1.5275252316519465) < 1e-12 if obs == 77
assert reldif(rm, 5.642857142857143) < 1e-13 if obs == 78
assert reldif(rt, 11.285714285714286) < 1e-13 if obs == 78
assert reldif(rmin, 3.0) < 1e-13 if obs == 78
assert reldif(rmax, 8.285714285714286) < 1e-13 if obs == 78
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 78
assert reldif(rsd, 3.73756441484318) < 1e-12 if obs == 78
assert reldif(rm, 8.357142857142856) < 1e-13 if obs == 79
assert reldif(rt, 25.07142857142857) < 1e-13 if obs == 79
assert reldif(rmin, 4.0) < 1e-13 if obs == 79
assert reldif(rmax, 13.571428571428571) < 1e-13 if obs == 79
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 79
assert reldif(rsd, 4.842941423623979) < 1e-12 if obs == 79
assert reldif(rm, 3.8095238095238098) < 1e-13 if obs == 80
assert reldif(rt, 11.428571428571429) < 1e-13 if obs == 80
assert reldif(rmin, 1.0) < 1e-13 if obs == 80
assert reldif(rmax, 6.0) < 1e-13 if obs == 80
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 80
assert reldif(rsd, 2.5568369064112) < 1e-12 if obs == 80
assert reldif(rm, 5.857142857142857) < 1e-13 if obs == 81
assert reldif(rt, 11.714285714285714) < 1e-13 if obs == 81
assert reldif(rmin, 2.0) < 1e-13 if obs == 81
assert reldif(rmax, 9.714285714285714) < 1e-13 if obs == 81
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 81
assert reldif(rsd, 5.454823740581937) < 1e-12 if obs == 81
assert reldif(rm, 2.1904761904761902) < 1e-13 if obs == 82
assert reldif(rt, 6.571428571428571) < 1e-13 if obs == 82
assert reldif(rmin, 0.5714285714285714) < 1e-13 if obs == 82
assert reldif(rmax, 3.0) < 1e-13 if obs == 82
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 82
assert reldif(rsd, 1.4021363680319483) < 1e-12 if obs == 82
assert reldif(rm, 3.785714285714286) < 1e-13 if obs == 83
assert reldif(rt, 11.357142857142858) < 1e-13 if obs == 83
assert reldif(rmin, 1.5) < 1e-13 if obs == 83
assert reldif(rmax, 5.857142857142857) < 1e-13 if obs == 83
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 83
assert reldif(rsd, 2.186461123573424) < 1e-12 if obs == 83
assert reldif(rm, 6.071428571428571) < 1e-13 if obs == 84
assert reldif(rt, 12.142857142857142) < 1e-13 if obs == 84
assert reldif(rmin, 1.0) < 1e-13 if obs == 84
assert reldif(rmax, 11.142857142857142) < 1e-13 if obs == 84
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 84
assert reldif(rsd, 7.172083066320695) < 1e-12 if obs == 84
assert reldif(rm, 5.5) < 1e-13 if obs == 85
assert reldif(rt, 11.0) < 1e-13 if obs == 85
assert reldif(rmin, 2.0) < 1e-13 if obs == 85
assert reldif(rmax, 9.0) < 1e-13 if obs == 85
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 85
assert reldif(rsd, 4.949747468305833) < 1e-12 if obs == 85
assert reldif(rm, 5.928571428571428) < 1e-13 if obs == 86
assert reldif(rt, 17.785714285714285) < 1e-13 if obs == 86
assert reldif(rmin, 3.0) < 1e-13 if obs == 86
assert reldif(rmax, 7.5) < 1e-13 if obs == 86
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 86
assert reldif(rsd, 2.5384793777024086) < 1e-12 if obs == 86
assert reldif(rm, 8.285714285714285) < 1e-13 if obs == 87
assert reldif(rt, 16.57142857142857) < 1e-13 if obs == 87
assert reldif(rmin, 4.0) < 1e-13 if obs == 87
assert reldif(rmax, 12.571428571428571) < 1e-13 if obs == 87
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 87
assert reldif(rsd, 6.0609152673132645) < 1e-12 if obs == 87
assert reldif(rm, 2.9761904761904763) < 1e-13 if obs == 88
assert reldif(rt, 8.928571428571429) < 1e-13 if obs == 88
assert reldif(rmin, 1.0) < 1e-13 if obs == 88
assert reldif(rmax, 4.5) < 1e-13 if obs == 88
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 88
assert reldif(rsd, 1.793317148347671) < 1e-12 if obs == 88
assert reldif(rm, 4.571428571428571) < 1e-13 if obs == 89
assert reldif(rt, 13.714285714285714) < 1e-13 if obs == 89
assert reldif(rmin, 2.0) < 1e-13 if obs == 89
assert reldif(rmax, 8.714285714285714) < 1e-13 if obs == 89
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 89
assert reldif(rsd, 3.6224920951731328) < 1e-12 if obs == 89
assert reldif(rm, 8.5) < 1e-13 if obs == 90
assert reldif(rt, 17.0) < 1e-13 if obs == 90
assert reldif(rmin, 3.0) < 1e-13 if obs == 90
assert reldif(rmax, 14.0) < 1e-13 if obs == 90
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 90
assert reldif(rsd, 7.7781745930520225) < 1e-12 if obs == 90
assert reldif(rm, 2.9523809523809526) < 1e-13 if obs == 91
assert reldif(rt, 8.857142857142858) < 1e-13 if obs == 91
assert reldif(rmin, 0.0) < 1e-13 if obs == 91
assert reldif(rmax, 4.857142857142857) < 1e-13 if obs == 91
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 91
assert reldif(rsd, 2.5925062073935616) < 1e-12 if obs == 91
assert reldif(rm, 6.714285714285714) < 1e-13 if obs == 92
assert reldif(rt, 20.142857142857142) < 1e-13 if obs == 92
assert reldif(rmin, 1.0) < 1e-13 if obs == 92
assert reldif(rmax, 10.142857142857142) < 1e-13 if obs == 92
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 92
assert reldif(rsd, 4.981598792617913) < 1e-12 if obs == 92
assert reldif(rm, 1.5) < 1e-13 if obs == 93
assert reldif(rt, 3.0) < 1e-13 if obs == 93
assert reldif(rmin, 1.0) < 1e-13 if obs == 93
assert reldif(rmax, 2.0) < 1e-13 if obs == 93
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 93
assert reldif(rsd, 0.7071067811865476) < 1e-12 if obs == 93
assert reldif(rm, 5.095238095238095) < 1e-13 if obs == 94
assert reldif(rt, 15.285714285714285) < 1e-13 if obs == 94
assert reldif(rmin, 3.0) < 1e-13 if obs == 94
assert reldif(rmax, 6.285714285714286) < 1e-13 if obs == 94
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 94
assert reldif(rsd, 1.8201442717729897) < 1e-12 if obs == 94
assert reldif(rm, 6.69047619047619) < 1e-13 if obs == 95
assert reldif(rt, 20.07142857142857) < 1e-13 if obs == 95
assert reldif(rmin, 4.0) < 1e-13 if obs == 95
assert reldif(rmax, 11.571428571428571) < 1e-13 if obs == 95
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 95
assert reldif(rsd, 4.234415202698424) < 1e-12 if obs == 95
assert reldif(rm, 1.7142857142857142) < 1e-13 if obs == 96
assert reldif(rt, 3.4285714285714284) < 1e-13 if obs == 96
assert reldif(rmin, 1.0) < 1e-13 if obs == 96
assert reldif(rmax, 2.4285714285714284) < 1e-13 if obs == 96
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 96
assert reldif(rsd, 1.0101525445522106) < 1e-12 if obs == 96
assert reldif(rm, 3.7380952380952386) < 1e-13 if obs == 97
assert reldif(rt, 11.214285714285715) < 1e-13 if obs == 97
assert reldif(rmin, 1.5) < 1e-13 if obs == 97
assert reldif(rmax, 7.714285714285714) < 1e-13 if obs == 97
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 97
assert reldif(rsd, 3.4525451520886565) < 1e-12 if obs == 97
assert reldif(rm, 5.333333333333333) < 1e-13 if obs == 98
assert reldif(rt, 16.0) < 1e-13 if obs == 98
assert reldif(rmin, 0.0) < 1e-13 if obs == 98
assert reldif(rmax, 13.0) < 1e-13 if obs == 98
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 98
assert reldif(rsd, 6.8068592855540455) < 1e-12 if obs == 98
assert reldif(rm, 3.928571428571429) < 1e-13 if obs == 99
assert reldif(rt, 7.857142857142858) < 1e-13 if obs == 99
assert reldif(rmin, 3.857142857142857) < 1e-13 if obs == 99
assert reldif(rmax, 4.0) < 1e-13 if obs == 99
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 99
assert reldif(rsd, 0.10101525445522103) < 1e-12 if obs == 99
assert reldif(rm, 5.8809523809523805) < 1e-13 if obs == 100
assert reldif(rt, 17.642857142857142) < 1e-13 if obs == 100
assert reldif(rmin, 1.0) < 1e-13 if obs == 100
assert reldif(rmax, 9.142857142857142) < 1e-13 if obs == 100
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 100
assert reldif(rsd, 4.306102298692254) < 1e-12 if obs == 100
assert reldif(rm, 2.6666666666666665) < 1e-13 if obs == 101
assert reldif(rt, 8.0) < 1e-13 if obs == 101
assert reldif(rmin, 0.0) < 1e-13 if obs == 101
assert reldif(rmax, 6.0) < 1e-13 if obs == 101
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 101
assert reldif(rsd, 3.055050463303893) < 1e-12 if obs == 101
assert reldif(rm, 3.0) < 1e-13 if obs == 102
assert reldif(rt, 3.0) < 1e-13 if obs == 102
assert reldif(rmin, 3.0) < 1e-13 if obs == 102
assert reldif(rmax, 3.0) < 1e-13 if obs == 102
assert rmiss == 2 & rnm == 1 & ac == 0 if obs == 102
assert missing(rsd) if obs == 102
assert reldif(rm, 5.857142857142857) < 1e-13 if obs == 103
assert reldif(rt, 17.57142857142857) < 1e-13 if obs == 103
assert reldif(rmin, 3.0) < 1e-13 if obs == 103
assert reldif(rmax, 10.571428571428571) < 1e-13 if obs == 103
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 103
assert reldif(rsd, 4.113194299682277) < 1e-12 if obs == 103
assert reldif(rm, 1.3095238095238095) < 1e-13 if obs == 104
assert reldif(rt, 3.928571428571429) < 1e-13 if obs == 104
assert reldif(rmin, 1.0) < 1e-13 if obs == 104
assert reldif(rmax, 1.5) < 1e-13 if obs == 104
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 104
assert reldif(rsd, 0.27042420694287017) < 1e-12 if obs == 104
assert reldif(rm, 4.357142857142858) < 1e-13 if obs == 105
assert reldif(rt, 8.714285714285715) < 1e-13 if obs == 105
assert reldif(rmin, 2.0) < 1e-13 if obs == 105
assert reldif(rmax, 6.714285714285714) < 1e-13 if obs == 105
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 105
assert reldif(rsd, 3.3335033970222954) < 1e-12 if obs == 105
assert reldif(rm, 8.0) < 1e-13 if obs == 106
assert reldif(rt, 24.0) < 1e-13 if obs == 106
assert reldif(rmin, 3.0) < 1e-13 if obs == 106
assert reldif(rmax, 12.0) < 1e-13 if obs == 106
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 106
assert reldif(rsd, 4.58257569495584) < 1e-12 if obs == 106
assert reldif(rm, 4.785714285714286) < 1e-13 if obs == 107
assert reldif(rt, 14.357142857142858) < 1e-13 if obs == 107
assert reldif(rmin, 2.857142857142857) < 1e-13 if obs == 107
assert reldif(rmax, 7.5) < 1e-13 if obs == 107
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 107
assert reldif(rsd, 2.4190991745537285) < 1e-12 if obs == 107
assert reldif(rm, 4.571428571428571) < 1e-13 if obs == 108
assert reldif(rt, 9.142857142857142) < 1e-13 if obs == 108
assert reldif(rmin, 1.0) < 1e-13 if obs == 108
assert reldif(rmax, 8.142857142857142) < 1e-13 if obs == 108
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 108
assert reldif(rsd, 5.050762722761053) < 1e-12 if obs == 108
assert reldif(rm, 6.642857142857143) < 1e-13 if obs == 109
assert reldif(rt, 19.92857142857143) < 1e-13 if obs == 109
assert reldif(rmin, 2.0) < 1e-13 if obs == 109
assert reldif(rmax, 13.428571428571429) < 1e-13 if obs == 109
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 109
assert reldif(rsd, 6.0080728004502575) < 1e-12 if obs == 109
assert reldif(rm, 3.4285714285714284) < 1e-13 if obs == 110
assert reldif(rt, 10.285714285714285) < 1e-13 if obs == 110
assert reldif(rmin, 3.0) < 1e-13 if obs == 110
assert reldif(rmax, 4.285714285714286) < 1e-13 if obs == 110
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 110
assert reldif(rsd, 0.7423074889580902) < 1e-12 if obs == 110
assert reldif(rm, 6.785714285714286) < 1e-13 if obs == 111
assert reldif(rt, 13.571428571428571) < 1e-13 if obs == 111
assert reldif(rmin, 4.0) < 1e-13 if obs == 111
assert reldif(rmax, 9.571428571428571) < 1e-13 if obs == 111
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 111
assert reldif(rsd, 3.9395949237536216) < 1e-12 if obs == 111
assert reldif(rm, 0.4761904761904762) < 1e-13 if obs == 112
assert reldif(rt, 1.4285714285714286) < 1e-13 if obs == 112
assert reldif(rmin, 0.0) < 1e-13 if obs == 112
assert reldif(rmax, 1.0) < 1e-13 if obs == 112
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 112
assert reldif(rsd, 0.5016977977548923) < 1e-12 if obs == 112
assert reldif(rm, 5.571428571428572) < 1e-13 if obs == 113
assert reldif(rt, 16.714285714285715) < 1e-13 if obs == 113
assert reldif(rmin, 2.0) < 1e-13 if obs == 113
assert reldif(rmax, 9.0) < 1e-13 if obs == 113
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 113
assert reldif(rsd, 3.502185906323218) < 1e-12 if obs == 113
assert reldif(rm, 7.0) < 1e-13 if obs == 114
assert reldif(rt, 14.0) < 1e-13 if obs == 114
assert reldif(rmin, 3.0) < 1e-13 if obs == 114
assert reldif(rmax, 11.0) < 1e-13 if obs == 114
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 114
assert reldif(rsd, 5.656854249492381) < 1e-12 if obs == 114
assert reldif(rm, 3.9523809523809526) < 1e-13 if obs == 115
assert reldif(rt, 11.857142857142858) < 1e-13 if obs == 115
assert reldif(rmin, 1.8571428571428572) < 1e-13 if obs == 115
assert reldif(rmax, 6.0) < 1e-13 if obs == 115
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 115
assert reldif(rsd, 2.0718390397911515) < 1e-12 if obs == 115
assert reldif(rm, 4.214285714285714) < 1e-13 if obs == 116
assert reldif(rt, 12.642857142857142) < 1e-13 if obs == 116
assert reldif(rmin, 1.0) < 1e-13 if obs == 116
assert reldif(rmax, 7.142857142857143) < 1e-13 if obs == 116
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 116
assert reldif(rsd, 3.0813792300175704) < 1e-12 if obs == 116
assert reldif(rm, 7.214285714285714) < 1e-13 if obs == 117
assert reldif(rt, 14.428571428571429) < 1e-13 if obs == 117
assert reldif(rmin, 2.0) < 1e-13 if obs == 117
assert reldif(rmax, 12.428571428571429) < 1e-13 if obs == 117
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 117
assert reldif(rsd, 7.374113575231139) < 1e-12 if obs == 117
assert reldif(rm, 2.5952380952380953) < 1e-13 if obs == 118
assert reldif(rt, 7.785714285714286) < 1e-13 if obs == 118
assert reldif(rmin, 1.5) < 1e-13 if obs == 118
assert reldif(rmax, 3.2857142857142856) < 1e-13 if obs == 118
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 118
assert reldif(rsd, 0.9592017656420803) < 1e-12 if obs == 118
assert reldif(rm, 2.0) < 1e-13 if obs == 119
assert reldif(rt, 4.0) < 1e-13 if obs == 119
assert reldif(rmin, 0.0) < 1e-13 if obs == 119
assert reldif(rmax, 4.0) < 1e-13 if obs == 119
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 119
assert reldif(rsd, 2.8284271247461903) < 1e-12 if obs == 119
assert reldif(rm, 7.428571428571429) < 1e-13 if obs == 120
assert reldif(rt, 14.857142857142858) < 1e-13 if obs == 120
assert reldif(rmin, 1.0) < 1e-13 if obs == 120
assert reldif(rmax, 13.857142857142858) < 1e-13 if obs == 120
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 120
assert reldif(rsd, 9.091372900969898) < 1e-12 if obs == 120
assert reldif(rm, 4.738095238095238) < 1e-13 if obs == 121
assert reldif(rt, 14.214285714285715) < 1e-13 if obs == 121
assert reldif(rmin, 2.0) < 1e-13 if obs == 121
assert reldif(rmax, 7.5) < 1e-13 if obs == 121
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 121
assert reldif(rsd, 2.750077302562244) < 1e-12 if obs == 121
assert reldif(rm, 6.333333333333333) < 1e-13 if obs == 122
assert reldif(rt, 19.0) < 1e-13 if obs == 122
assert reldif(rmin, 3.0) < 1e-13 if obs == 122
assert reldif(rmax, 10.0) < 1e-13 if obs == 122
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 122
assert reldif(rsd, 3.511884584284246) < 1e-12 if obs == 122
assert reldif(rm, 2.4285714285714284) < 1e-13 if obs == 123
assert reldif(rt, 4.857142857142857) < 1e-13 if obs == 123
assert reldif(rmin, 0.8571428571428571) < 1e-13 if obs == 123
assert reldif(rmax, 4.0) < 1e-13 if obs == 123
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 123
assert reldif(rsd, 2.2223355980148636) < 1e-12 if obs == 123
assert reldif(rm, 3.380952380952381) < 1e-13 if obs == 124
assert reldif(rt, 10.142857142857142) < 1e-13 if obs == 124
assert reldif(rmin, 1.0) < 1e-13 if obs == 124
assert reldif(rmax, 6.142857142857143) < 1e-13 if obs == 124
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 124
assert reldif(rsd, 2.592506207393562) < 1e-12 if obs == 124
assert reldif(rm, 4.976190476190476) < 1e-13 if obs == 125
assert reldif(rt, 14.928571428571429) < 1e-13 if obs == 125
assert reldif(rmin, 1.5) < 1e-13 if obs == 125
assert reldif(rmax, 11.428571428571429) < 1e-13 if obs == 125
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 125
assert reldif(rsd, 5.593515438969164) < 1e-12 if obs == 125
assert reldif(rm, 2.642857142857143) < 1e-13 if obs == 126
assert reldif(rt, 5.285714285714286) < 1e-13 if obs == 126
assert reldif(rmin, 2.2857142857142856) < 1e-13 if obs == 126
assert reldif(rmax, 3.0) < 1e-13 if obs == 126
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 126
assert reldif(rsd, 0.5050762722761055) < 1e-12 if obs == 126
assert reldif(rm, 6.857142857142857) < 1e-13 if obs == 127
assert reldif(rt, 20.57142857142857) < 1e-13 if obs == 127
assert reldif(rmin, 4.0) < 1e-13 if obs == 127
assert reldif(rmax, 9.0) < 1e-13 if obs == 127
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 127
assert reldif(rsd, 2.575393768188564) < 1e-12 if obs == 127
assert reldif(rm, 7.1190476190476195) < 1e-13 if obs == 128
assert reldif(rt, 21.357142857142858) < 1e-13 if obs == 128
assert reldif(rmin, 1.0) < 1e-13 if obs == 128
assert reldif(rmax, 12.857142857142858) < 1e-13 if obs == 128
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 128
assert reldif(rsd, 5.937743908345024) < 1e-12 if obs == 128
assert reldif(rm, 2.857142857142857) < 1e-13 if obs == 129
assert reldif(rt, 5.714285714285714) < 1e-13 if obs == 129
assert reldif(rmin, 2.0) < 1e-13 if obs == 129
assert reldif(rmax, 3.7142857142857144) < 1e-13 if obs == 129
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 129
assert reldif(rsd, 1.212183053462653) < 1e-12 if obs == 129
assert reldif(rm, 5.5) < 1e-13 if obs == 130
assert reldif(rt, 16.5) < 1e-13 if obs == 130
assert reldif(rmin, 3.0) < 1e-13 if obs == 130
assert reldif(rmax, 9.0) < 1e-13 if obs == 130
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 130
assert reldif(rsd, 3.122498999199199) < 1e-12 if obs == 130
assert reldif(rm, 7.095238095238095) < 1e-13 if obs == 131
assert reldif(rt, 21.285714285714285) < 1e-13 if obs == 131
assert reldif(rmin, 3.0) < 1e-13 if obs == 131
assert reldif(rmax, 14.285714285714286) < 1e-13 if obs == 131
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 131
assert reldif(rsd, 6.247176232855429) < 1e-12 if obs == 131
assert reldif(rm, 3.0714285714285716) < 1e-13 if obs == 132
assert reldif(rt, 6.142857142857143) < 1e-13 if obs == 132
assert reldif(rmin, 1.0) < 1e-13 if obs == 132
assert reldif(rmax, 5.142857142857143) < 1e-13 if obs == 132
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 132
assert reldif(rsd, 2.9294423792014115) < 1e-12 if obs == 132
assert reldif(rm, 4.142857142857143) < 1e-13 if obs == 133
assert reldif(rt, 12.428571428571429) < 1e-13 if obs == 133
assert reldif(rmin, 0.0) < 1e-13 if obs == 133
assert reldif(rmax, 10.428571428571429) < 1e-13 if obs == 133
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 133
assert reldif(rsd, 5.534677322231576) < 1e-12 if obs == 133
assert reldif(rm, 4.428571428571429) < 1e-13 if obs == 134
assert reldif(rt, 13.285714285714286) < 1e-13 if obs == 134
assert reldif(rmin, 1.2857142857142858) < 1e-13 if obs == 134
assert reldif(rmax, 9.0) < 1e-13 if obs == 134
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 134
assert reldif(rsd, 4.050699108216522) < 1e-12 if obs == 134
assert reldif(rm, 5.285714285714286) < 1e-13 if obs == 135
assert reldif(rt, 10.571428571428571) < 1e-13 if obs == 135
assert reldif(rmin, 4.0) < 1e-13 if obs == 135
assert reldif(rmax, 6.571428571428571) < 1e-13 if obs == 135
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 135
assert reldif(rsd, 1.818274580193979) < 1e-12 if obs == 135
assert reldif(rm, 3.5) < 1e-13 if obs == 136
assert reldif(rt, 7.0) < 1e-13 if obs == 136
assert reldif(rmin, 1.0) < 1e-13 if obs == 136
assert reldif(rmax, 6.0) < 1e-13 if obs == 136
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 136
assert reldif(rsd, 3.5355339059327378) < 1e-12 if obs == 136
assert reldif(rm, 3.0714285714285716) < 1e-13 if obs == 137
assert reldif(rt, 9.214285714285715) < 1e-13 if obs == 137
assert reldif(rmin, 2.0) < 1e-13 if obs == 137
assert reldif(rmax, 4.5) < 1e-13 if obs == 137
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 137
assert reldif(rsd, 1.287696884094282) < 1e-12 if obs == 137
assert reldif(rm, 5.5) < 1e-13 if obs == 138
assert reldif(rt, 11.0) < 1e-13 if obs == 138
assert reldif(rmin, 3.0) < 1e-13 if obs == 138
assert reldif(rmax, 8.0) < 1e-13 if obs == 138
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 138
assert reldif(rsd, 3.5355339059327378) < 1e-12 if obs == 138
assert reldif(rm, 6.261904761904762) < 1e-13 if obs == 139
assert reldif(rt, 18.785714285714285) < 1e-13 if obs == 139
assert reldif(rmin, 1.5) < 1e-13 if obs == 139
assert reldif(rmax, 13.285714285714286) < 1e-13 if obs == 139
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 139
assert reldif(rsd, 6.209905407497608) < 1e-12 if obs == 139
assert reldif(rm, 1.7142857142857144) < 1e-13 if obs == 140
assert reldif(rt, 5.142857142857143) < 1e-13 if obs == 140
assert reldif(rmin, 0.0) < 1e-13 if obs == 140
assert reldif(rmax, 4.142857142857143) < 1e-13 if obs == 140
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 140
assert reldif(rsd, 2.1618208500602223) < 1e-12 if obs == 140
assert reldif(rm, 5.714285714285714) < 1e-13 if obs == 141
assert reldif(rt, 11.428571428571429) < 1e-13 if obs == 141
assert reldif(rmin, 2.0) < 1e-13 if obs == 141
assert reldif(rmax, 9.428571428571429) < 1e-13 if obs == 141
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 141
assert reldif(rsd, 5.252793231671496) < 1e-12 if obs == 141
assert reldif(rm, 3.595238095238095) < 1e-13 if obs == 142
assert reldif(rt, 10.785714285714285) < 1e-13 if obs == 142
assert reldif(rmin, 0.2857142857142857) < 1e-13 if obs == 142
assert reldif(rmax, 7.5) < 1e-13 if obs == 142
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 142
assert reldif(rsd, 3.643790730043884) < 1e-12 if obs == 142
assert reldif(rm, 5.190476190476191) < 1e-13 if obs == 143
assert reldif(rt, 15.571428571428571) < 1e-13 if obs == 143
assert reldif(rmin, 4.0) < 1e-13 if obs == 143
assert reldif(rmax, 6.0) < 1e-13 if obs == 143
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 143
assert reldif(rsd, 1.0530163994045705) < 1e-12 if obs == 143
assert reldif(rm, 5.928571428571429) < 1e-13 if obs == 144
assert reldif(rt, 11.857142857142858) < 1e-13 if obs == 144
assert reldif(rmin, 1.0) < 1e-13 if obs == 144
assert reldif(rmax, 10.857142857142858) < 1e-13 if obs == 144
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 144
assert reldif(rsd, 6.970052557410255) < 1e-12 if obs == 144
assert reldif(rm, 2.238095238095238) < 1e-13 if obs == 145
assert reldif(rt, 6.714285714285714) < 1e-13 if obs == 145
assert reldif(rmin, 1.7142857142857142) < 1e-13 if obs == 145
assert reldif(rmax, 3.0) < 1e-13 if obs == 145
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 145
assert reldif(rsd, 0.675116518036087) < 1e-12 if obs == 145
assert reldif(rm, 3.8333333333333335) < 1e-13 if obs == 146
assert reldif(rt, 11.5) < 1e-13 if obs == 146
assert reldif(rmin, 1.5) < 1e-13 if obs == 146
assert reldif(rmax, 7.0) < 1e-13 if obs == 146
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 146
assert reldif(rsd, 2.8431203515386634) < 1e-12 if obs == 146
assert reldif(rm, 8.142857142857142) < 1e-13 if obs == 147
assert reldif(rt, 16.285714285714285) < 1e-13 if obs == 147
assert reldif(rmin, 4.0) < 1e-13 if obs == 147
assert reldif(rmax, 12.285714285714286) < 1e-13 if obs == 147
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 147
assert reldif(rsd, 5.858884758402823) < 1e-12 if obs == 147
assert reldif(rm, 4.3809523809523805) < 1e-13 if obs == 148
assert reldif(rt, 13.142857142857142) < 1e-13 if obs == 148
assert reldif(rmin, 1.0) < 1e-13 if obs == 148
assert reldif(rmax, 9.0) < 1e-13 if obs == 148
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 148
assert reldif(rsd, 4.141214781189884) < 1e-12 if obs == 148
assert reldif(rm, 5.976190476190477) < 1e-13 if obs == 149
assert reldif(rt, 17.92857142857143) < 1e-13 if obs == 149
assert reldif(rmin, 2.0) < 1e-13 if obs == 149
assert reldif(rmax, 8.428571428571429) < 1e-13 if obs == 149
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 149
assert reldif(rsd, 3.47464088096895) < 1e-12 if obs == 149
assert reldif(rm, 8.357142857142858) < 1e-13 if obs == 150
assert reldif(rt, 16.714285714285715) < 1e-13 if obs == 150
assert reldif(rmin, 3.0) < 1e-13 if obs == 150
assert reldif(rmax, 13.714285714285714) < 1e-13 if obs == 150
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 150
assert reldif(rsd, 7.57614408414158) < 1e-12 if obs == 150
assert reldif(rm, 4.357142857142857) < 1e-13 if obs == 151
assert reldif(rt, 13.071428571428571) < 1e-13 if obs == 151
assert reldif(rmin, 4.0) < 1e-13 if obs == 151
assert reldif(rmax, 4.571428571428571) < 1e-13 if obs == 151
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 151
assert reldif(rsd, 0.3113499245386194) < 1e-12 if obs == 151
assert reldif(rm, 4.6190476190476195) < 1e-13 if obs == 152
assert reldif(rt, 13.857142857142858) < 1e-13 if obs == 152
assert reldif(rmin, 1.0) < 1e-13 if obs == 152
assert reldif(rmax, 9.857142857142858) < 1e-13 if obs == 152
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 152
assert reldif(rsd, 4.6452374850503615) < 1e-12 if obs == 152
assert reldif(rm, 2.0) < 1e-13 if obs == 153
assert reldif(rt, 2.0) < 1e-13 if obs == 153
assert reldif(rmin, 2.0) < 1e-13 if obs == 153
assert reldif(rmax, 2.0) < 1e-13 if obs == 153
assert rmiss == 2 & rnm == 1 & ac == 2 if obs == 153
assert missing(rsd) if obs == 153
assert reldif(rm, 3.0) < 1e-13 if obs == 154
assert reldif(rt, 9.0) < 1e-13 if obs == 154
assert reldif(rmin, 0.0) < 1e-13 if obs == 154
assert reldif(rmax, 6.0) < 1e-13 if obs == 154
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 154
assert reldif(rsd, 3.0) < 1e-12 if obs == 154
assert reldif(rm, 8.095238095238095) < 1e-13 if obs == 155
assert reldif(rt, 24.285714285714285) < 1e-13 if obs == 155
assert reldif(rmin, 4.0) < 1e-13 if obs == 155
assert reldif(rmax, 11.285714285714286) < 1e-13 if obs == 155
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 155
assert reldif(rsd, 3.7261714589504065) < 1e-12 if obs == 155
assert reldif(rm, 1.5714285714285714) < 1e-13 if obs == 156
assert reldif(rt, 3.142857142857143) < 1e-13 if obs == 156
assert reldif(rmin, 1.0) < 1e-13 if obs == 156
assert reldif(rmax, 2.142857142857143) < 1e-13 if obs == 156
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 156
assert reldif(rsd, 0.8081220356417685) < 1e-12 if obs == 156
assert reldif(rm, 5.142857142857143) < 1e-13 if obs == 157
assert reldif(rt, 15.428571428571429) < 1e-13 if obs == 157
assert reldif(rmin, 2.0) < 1e-13 if obs == 157
assert reldif(rmax, 7.428571428571429) < 1e-13 if obs == 157
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 157
assert reldif(rsd, 2.813959371941744) < 1e-12 if obs == 157
assert reldif(rm, 6.738095238095238) < 1e-13 if obs == 158
assert reldif(rt, 20.214285714285715) < 1e-13 if obs == 158
assert reldif(rmin, 3.0) < 1e-13 if obs == 158
assert reldif(rmax, 12.714285714285714) < 1e-13 if obs == 158
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 158
assert reldif(rsd, 5.22959266633476) < 1e-12 if obs == 158
assert reldif(rm, 3.7857142857142856) < 1e-13 if obs == 159
assert reldif(rt, 7.571428571428571) < 1e-13 if obs == 159
assert reldif(rmin, 3.5714285714285716) < 1e-13 if obs == 159
assert reldif(rmax, 4.0) < 1e-13 if obs == 159
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 159
assert reldif(rsd, 0.3030457633656631) < 1e-12 if obs == 159
assert reldif(rm, 3.785714285714286) < 1e-13 if obs == 160
assert reldif(rt, 11.357142857142858) < 1e-13 if obs == 160
assert reldif(rmin, 1.0) < 1e-13 if obs == 160
assert reldif(rmax, 8.857142857142858) < 1e-13 if obs == 160
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 160
assert reldif(rsd, 4.399095454332235) < 1e-12 if obs == 160
assert reldif(rm, 5.3809523809523805) < 1e-13 if obs == 161
assert reldif(rt, 16.142857142857142) < 1e-13 if obs == 161
assert reldif(rmin, 0.0) < 1e-13 if obs == 161
assert reldif(rmax, 14.142857142857142) < 1e-13 if obs == 161
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 161
assert reldif(rsd, 7.653641701341722) < 1e-12 if obs == 161
assert reldif(rm, 4.0) < 1e-13 if obs == 162
assert reldif(rt, 8.0) < 1e-13 if obs == 162
assert reldif(rmin, 3.0) < 1e-13 if obs == 162
assert reldif(rmax, 5.0) < 1e-13 if obs == 162
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 162
assert reldif(rsd, 1.4142135623730951) < 1e-12 if obs == 162
assert reldif(rm, 7.261904761904762) < 1e-13 if obs == 163
assert reldif(rt, 21.785714285714285) < 1e-13 if obs == 163
assert reldif(rmin, 4.0) < 1e-13 if obs == 163
assert reldif(rmax, 10.285714285714286) < 1e-13 if obs == 163
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 163
assert reldif(rsd, 3.1496139489167376) < 1e-12 if obs == 163
assert reldif(rm, 2.714285714285714) < 1e-13 if obs == 164
assert reldif(rt, 8.142857142857142) < 1e-13 if obs == 164
assert reldif(rmin, 1.0) < 1e-13 if obs == 164
assert reldif(rmax, 6.0) < 1e-13 if obs == 164
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 164
assert reldif(rsd, 2.8464084064530395) < 1e-12 if obs == 164
assert reldif(rm, 4.214285714285714) < 1e-13 if obs == 165
assert reldif(rt, 8.428571428571429) < 1e-13 if obs == 165
assert reldif(rmin, 2.0) < 1e-13 if obs == 165
assert reldif(rmax, 6.428571428571429) < 1e-13 if obs == 165
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 165
assert reldif(rsd, 3.1314728881118534) < 1e-12 if obs == 165
assert reldif(rm, 5.904761904761905) < 1e-13 if obs == 166
assert reldif(rt, 17.714285714285715) < 1e-13 if obs == 166
assert reldif(rmin, 3.0) < 1e-13 if obs == 166
assert reldif(rmax, 11.714285714285714) < 1e-13 if obs == 166
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 166
assert reldif(rsd, 5.031195202938167) < 1e-12 if obs == 166
assert reldif(rm, 2.6904761904761902) < 1e-13 if obs == 167
assert reldif(rt, 8.071428571428571) < 1e-13 if obs == 167
assert reldif(rmin, 1.5) < 1e-13 if obs == 167
assert reldif(rmax, 4.0) < 1e-13 if obs == 167
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 167
assert reldif(rsd, 1.2542444943872308) < 1e-12 if obs == 167
assert reldif(rm, 4.428571428571429) < 1e-13 if obs == 168
assert reldif(rt, 8.857142857142858) < 1e-13 if obs == 168
assert reldif(rmin, 1.0) < 1e-13 if obs == 168
assert reldif(rmax, 7.857142857142857) < 1e-13 if obs == 168
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 168
assert reldif(rsd, 4.848732213850611) < 1e-12 if obs == 168
assert reldif(rm, 8.047619047619047) < 1e-13 if obs == 169
assert reldif(rt, 24.142857142857142) < 1e-13 if obs == 169
assert reldif(rmin, 2.0) < 1e-13 if obs == 169
assert reldif(rmax, 13.142857142857142) < 1e-13 if obs == 169
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 169
assert reldif(rsd, 5.632147763986146) < 1e-12 if obs == 169
assert reldif(rm, 5.25) < 1e-13 if obs == 170
assert reldif(rt, 10.5) < 1e-13 if obs == 170
assert reldif(rmin, 3.0) < 1e-13 if obs == 170
assert reldif(rmax, 7.5) < 1e-13 if obs == 170
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 170
assert reldif(rsd, 3.181980515339464) < 1e-12 if obs == 170
assert reldif(rm, 6.642857142857143) < 1e-13 if obs == 171
assert reldif(rt, 13.285714285714286) < 1e-13 if obs == 171
assert reldif(rmin, 4.0) < 1e-13 if obs == 171
assert reldif(rmax, 9.285714285714286) < 1e-13 if obs == 171
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 171
assert reldif(rsd, 3.73756441484318) < 1e-12 if obs == 171
assert reldif(rm, 1.8809523809523812) < 1e-13 if obs == 172
assert reldif(rt, 5.642857142857143) < 1e-13 if obs == 172
assert reldif(rmin, 0.14285714285714285) < 1e-13 if obs == 172
assert reldif(rmax, 4.5) < 1e-13 if obs == 172
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 172
assert reldif(rsd, 2.3082961882126405) < 1e-12 if obs == 172
assert reldif(rm, 3.4761904761904763) < 1e-13 if obs == 173
assert reldif(rt, 10.428571428571429) < 1e-13 if obs == 173
assert reldif(rmin, 2.0) < 1e-13 if obs == 173
assert reldif(rmax, 5.428571428571429) < 1e-13 if obs == 173
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 173
assert reldif(rsd, 1.763191293483202) < 1e-12 if obs == 173
assert reldif(rm, 6.857142857142857) < 1e-13 if obs == 174
assert reldif(rt, 13.714285714285714) < 1e-13 if obs == 174
assert reldif(rmin, 3.0) < 1e-13 if obs == 174
assert reldif(rmax, 10.714285714285714) < 1e-13 if obs == 174
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 174
assert reldif(rsd, 5.454823740581937) < 1e-12 if obs == 174
assert reldif(rm, 1.857142857142857) < 1e-13 if obs == 175
assert reldif(rt, 5.571428571428571) < 1e-13 if obs == 175
assert reldif(rmin, 0.0) < 1e-13 if obs == 175
assert reldif(rmax, 4.0) < 1e-13 if obs == 175
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 175
assert reldif(rsd, 2.0152479970951265) < 1e-12 if obs == 175
assert reldif(rm, 5.6190476190476195) < 1e-13 if obs == 176
assert reldif(rt, 16.857142857142858) < 1e-13 if obs == 176
assert reldif(rmin, 1.0) < 1e-13 if obs == 176
assert reldif(rmax, 9.0) < 1e-13 if obs == 176
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 176
assert reldif(rsd, 4.141214781189884) < 1e-12 if obs == 176
assert reldif(rm, 7.071428571428571) < 1e-13 if obs == 177
assert reldif(rt, 14.142857142857142) < 1e-13 if obs == 177
assert reldif(rmin, 2.0) < 1e-13 if obs == 177
assert reldif(rmax, 12.142857142857142) < 1e-13 if obs == 177
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 177
assert reldif(rsd, 7.172083066320695) < 1e-12 if obs == 177
assert reldif(rm, 4.0) < 1e-13 if obs == 178
assert reldif(rt, 12.0) < 1e-13 if obs == 178
assert reldif(rmin, 3.0) < 1e-13 if obs == 178
assert reldif(rmax, 6.0) < 1e-13 if obs == 178
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 178
assert reldif(rsd, 1.7320508075688772) < 1e-12 if obs == 178
assert reldif(rm, 5.595238095238095) < 1e-13 if obs == 179
assert reldif(rt, 16.785714285714285) < 1e-13 if obs == 179
assert reldif(rmin, 4.0) < 1e-13 if obs == 179
assert reldif(rmax, 8.285714285714286) < 1e-13 if obs == 179
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 179
assert reldif(rsd, 2.343394247376966) < 1e-12 if obs == 179
assert reldif(rm, 7.285714285714286) < 1e-13 if obs == 180
assert reldif(rt, 14.571428571428571) < 1e-13 if obs == 180
assert reldif(rmin, 1.0) < 1e-13 if obs == 180
assert reldif(rmax, 13.571428571428571) < 1e-13 if obs == 180
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 180
assert reldif(rsd, 8.889342392059454) < 1e-12 if obs == 180
assert reldif(rm, 2.642857142857143) < 1e-13 if obs == 181
assert reldif(rt, 7.928571428571429) < 1e-13 if obs == 181
assert reldif(rmin, 1.5) < 1e-13 if obs == 181
assert reldif(rmax, 4.428571428571429) < 1e-13 if obs == 181
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 181
assert reldif(rsd, 1.5665508713900937) < 1e-12 if obs == 181
assert reldif(rm, 4.238095238095238) < 1e-13 if obs == 182
assert reldif(rt, 12.714285714285714) < 1e-13 if obs == 182
assert reldif(rmin, 0.0) < 1e-13 if obs == 182
assert reldif(rmax, 9.714285714285714) < 1e-13 if obs == 182
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 182
assert reldif(rsd, 4.974082488121749) < 1e-12 if obs == 182
assert reldif(rm, 2.2857142857142856) < 1e-13 if obs == 183
assert reldif(rt, 4.571428571428571) < 1e-13 if obs == 183
assert reldif(rmin, 0.5714285714285714) < 1e-13 if obs == 183
assert reldif(rmax, 4.0) < 1e-13 if obs == 183
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 183
assert reldif(rsd, 2.424366106925306) < 1e-12 if obs == 183
assert reldif(rm, 4.785714285714286) < 1e-13 if obs == 184
assert reldif(rt, 14.357142857142858) < 1e-13 if obs == 184
assert reldif(rmin, 1.0) < 1e-13 if obs == 184
assert reldif(rmax, 7.5) < 1e-13 if obs == 184
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 184
assert reldif(rsd, 3.379862332663137) < 1e-12 if obs == 184
assert reldif(rm, 6.3809523809523805) < 1e-13 if obs == 185
assert reldif(rt, 19.142857142857142) < 1e-13 if obs == 185
assert reldif(rmin, 2.0) < 1e-13 if obs == 185
assert reldif(rmax, 11.142857142857142) < 1e-13 if obs == 185
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 185
assert reldif(rsd, 4.58331787257751) < 1e-12 if obs == 185
assert reldif(rm, 2.5) < 1e-13 if obs == 186
assert reldif(rt, 5.0) < 1e-13 if obs == 186
assert reldif(rmin, 2.0) < 1e-13 if obs == 186
assert reldif(rmax, 3.0) < 1e-13 if obs == 186
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 186
assert reldif(rsd, 0.7071067811865476) < 1e-12 if obs == 186
assert reldif(rm, 3.5) < 1e-13 if obs == 187
assert reldif(rt, 7.0) < 1e-13 if obs == 187
assert reldif(rmin, 3.0) < 1e-13 if obs == 187
assert reldif(rmax, 4.0) < 1e-13 if obs == 187
assert rmiss == 1 & rnm == 2 & ac == 2 if obs == 187
assert reldif(rsd, 0.7071067811865476) < 1e-12 if obs == 187
assert reldif(rm, 5.023809523809524) < 1e-13 if obs == 188
assert reldif(rt, 15.071428571428571) < 1e-13 if obs == 188
assert reldif(rmin, 1.0) < 1e-13 if obs == 188
assert reldif(rmax, 12.571428571428571) < 1e-13 if obs == 188
assert rmiss == 0 & rnm == 3 & ac == 3 if obs == 188
assert reldif(rsd, 6.541208983512634) < 1e-12 if obs == 188
assert reldif(rm, 2.7142857142857144) < 1e-13 if obs == 189
assert reldif(rt, 5.428571428571429) < 1e-13 if obs == 189
assert reldif(rmin, 2.0) < 1e-13 if obs == 189
assert reldif(rmax, 3.4285714285714284) < 1e-13 if obs == 189
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 189
assert reldif(rsd, 1.0101525445522106) < 1e-12 if obs == 189
assert reldif(rm, 6.904761904761905) < 1e-13 if obs == 190
assert reldif(rt, 20.714285714285715) < 1e-13 if obs == 190
assert reldif(rmin, 3.0) < 1e-13 if obs == 190
assert reldif(rmax, 9.0) < 1e-13 if obs == 190
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 190
assert reldif(rsd, 3.384639170269878) < 1e-12 if obs == 190
assert reldif(rm, 8.5) < 1e-13 if obs == 191
assert reldif(rt, 25.5) < 1e-13 if obs == 191
assert reldif(rmin, 4.0) < 1e-13 if obs == 191
assert reldif(rmax, 14.0) < 1e-13 if obs == 191
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 191
assert reldif(rsd, 5.07444578254611) < 1e-12 if obs == 191
assert reldif(rm, 2.9285714285714284) < 1e-13 if obs == 192
assert reldif(rt, 5.857142857142857) < 1e-13 if obs == 192
assert reldif(rmin, 1.0) < 1e-13 if obs == 192
assert reldif(rmax, 4.857142857142857) < 1e-13 if obs == 192
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 192
assert reldif(rsd, 2.7274118702909687) < 1e-12 if obs == 192
assert reldif(rm, 5.5476190476190474) < 1e-13 if obs == 193
assert reldif(rt, 16.642857142857142) < 1e-13 if obs == 193
assert reldif(rmin, 2.0) < 1e-13 if obs == 193
assert reldif(rmax, 10.142857142857142) < 1e-13 if obs == 193
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 193
assert reldif(rsd, 4.171289952034691) < 1e-12 if obs == 193
assert reldif(rm, 2.3333333333333335) < 1e-13 if obs == 194
assert reldif(rt, 7.0) < 1e-13 if obs == 194
assert reldif(rmin, 1.0) < 1e-13 if obs == 194
assert reldif(rmax, 3.0) < 1e-13 if obs == 194
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 194
assert reldif(rsd, 1.1547005383792515) < 1e-12 if obs == 194
assert reldif(rm, 5.142857142857142) < 1e-13 if obs == 195
assert reldif(rt, 10.285714285714285) < 1e-13 if obs == 195
assert reldif(rmin, 4.0) < 1e-13 if obs == 195
assert reldif(rmax, 6.285714285714286) < 1e-13 if obs == 195
assert rmiss == 1 & rnm == 2 & ac == 1 if obs == 195
assert reldif(rsd, 1.616244071283537) < 1e-12 if obs == 195
assert reldif(rm, 4.190476190476191) < 1e-13 if obs == 196
assert reldif(rt, 12.571428571428571) < 1e-13 if obs == 196
assert reldif(rmin, 0.0) < 1e-13 if obs == 196
assert reldif(rmax, 11.571428571428571) < 1e-13 if obs == 196
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 196
assert reldif(rsd, 6.41161785647078) < 1e-12 if obs == 196
assert reldif(rm, 4.476190476190476) < 1e-13 if obs == 197
assert reldif(rt, 13.428571428571429) < 1e-13 if obs == 197
assert reldif(rmin, 2.0) < 1e-13 if obs == 197
assert reldif(rmax, 9.0) < 1e-13 if obs == 197
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 197
assert reldif(rsd, 3.923589915259908) < 1e-12 if obs == 197
assert reldif(rm, 5.357142857142858) < 1e-13 if obs == 198
assert reldif(rt, 10.714285714285715) < 1e-13 if obs == 198
assert reldif(rmin, 3.0) < 1e-13 if obs == 198
assert reldif(rmax, 7.714285714285714) < 1e-13 if obs == 198
assert rmiss == 1 & rnm == 2 & ac == 0 if obs == 198
assert reldif(rsd, 3.3335033970222954) < 1e-12 if obs == 198
assert reldif(rm, 7.666666666666667) < 1e-13 if obs == 199
assert reldif(rt, 23.0) < 1e-13 if obs == 199
assert reldif(rmin, 4.0) < 1e-13 if obs == 199
assert reldif(rmax, 13.0) < 1e-13 if obs == 199
assert rmiss == 0 & rnm == 3 & ac == 1 if obs == 199
assert reldif(rsd, 4.725815626252609) < 1e-12 if obs == 199
assert reldif(rm, 3.119047619047619) < 1e-13 if obs == 200
assert reldif(rt, 9.357142857142858) < 1e-13 if obs == 200
assert reldif(rmin, 1.0) < 1e-13 if obs == 200
assert reldif(rmax, 4.5) < 1e-13 if obs == 200
assert rmiss == 0 & rnm == 3 & ac == 2 if obs == 200
assert reldif(rsd, 1.8630857294752032) < 1e-12 if obs == 200
display "test completed"
